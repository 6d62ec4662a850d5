#include "protocol/push_offer.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace velmora {
namespace {

constexpr std::string_view kOfferEnd = "\n\n";
constexpr std::size_t kMostDigits = 9;
constexpr std::size_t kHexSize = 2 * kGuidSize;

// A whole number that takes up all of the text.
template <class Number>
bool read(std::string_view text, Number& value, int base) {
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value, base);
  return result.ec == std::errc() && result.ptr == end && text.front() != '-';
}

}  // namespace

std::string offer_to_str(const PushOffer& offer) {
  constexpr char kHex[] = "0123456789ABCDEF";
  std::string text = std::string(kOfferStart) + std::to_string(offer.file_number) + ":";
  for (const char c : std::string_view(offer.servent)) {
    const auto byte = static_cast<unsigned char>(c);
    text += kHex[byte / 16];
    text += kHex[byte % 16];
  }
  return text + "/" + offer.name + std::string(kOfferEnd);
}

std::optional<PushOffer> str_to_offer(std::string_view text) {
  if (!text.starts_with(kOfferStart) || !text.ends_with(kOfferEnd)) return std::nullopt;
  text.remove_prefix(kOfferStart.size());
  text.remove_suffix(std::min(kOfferEnd.size(), text.size()));
  const std::size_t colon = text.find(':');
  if (colon == 0 || colon == std::string_view::npos || colon > kMostDigits) return std::nullopt;
  const std::size_t slash = colon + 1 + kHexSize;
  if (slash >= text.size() || text[slash] != '/') return std::nullopt;

  PushOffer offer;
  if (!read(text.substr(0, colon), offer.file_number, 10)) return std::nullopt;
  std::string servent;
  for (std::size_t at = colon + 1; at < slash; at += 2) {
    unsigned char byte = 0;
    if (!read(text.substr(at, 2), byte, 16)) return std::nullopt;
    servent += static_cast<char>(byte);
  }
  offer.servent = servent;
  offer.name = text.substr(slash + 1);
  return offer;
}

}  // namespace velmora
