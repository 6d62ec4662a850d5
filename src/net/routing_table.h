// The ring of descriptor identifiers seen: which connection each came from (or, for our own, was
// sent on), so that pongs find their way back. 401 entries, overwritten strictly in ring order; a
// hit neither refreshes nor moves one. It decides nothing about what to forward.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "protocol/descriptor_header.h"

namespace velmora {

inline constexpr std::int16_t kOurOwn = -1;  // origin mark of descriptors that we originated

struct Route {
  std::int16_t connection = 0;
  std::uint8_t function = 0;
  std::int16_t origin_mark = 0;
};

class RoutingTable {
 public:
  static constexpr std::size_t kEntries = 401;

  // True if the identifier is known: `route` then becomes the stored one. Otherwise `route` is
  // stored with it. Kept: the first equal entry counts, unused and blanked entries included, so
  // that an identifier of all zeros or all blanks meets one of those.
  bool seen_guid(std::string_view guid, Route& route);

  // Blanks the identifiers of a connection that closed and takes its index out.
  void clear_routes(std::size_t connection);

 private:
  struct Entry {
    std::array<char, kGuidSize> guid{};
    Route route;
  };
  std::array<Entry, kEntries> entries_{};
  std::size_t write_position_ = 0;
};

}  // namespace velmora
