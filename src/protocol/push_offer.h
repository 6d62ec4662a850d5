// The line with which a servent that was asked by a push offers its file on the connection that it
// made: "GIV 12:0123456789ABCDEF0123456789ABCDEF/name" and two line feeds. Bytes <-> values.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "protocol/guid_bytes.h"

namespace velmora {

inline constexpr std::string_view kOfferStart = "GIV ";

struct PushOffer {
  std::int32_t file_number = 0;  // of the offering servent's list
  GuidBytes servent;             // who offers
  std::string name;
};

std::string offer_to_str(const PushOffer& offer);
// None for anything else than one whole line; the number has at most nine digits.
std::optional<PushOffer> str_to_offer(std::string_view text);

}  // namespace velmora
