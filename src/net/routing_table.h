// The ring of descriptor identifiers seen: which connection each came from (or, for our own, was
// sent on), so that pongs find their way back. 401 entries, overwritten strictly in ring order; a
// hit neither refreshes nor moves one. It decides nothing about what to forward.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "net/guid_index.h"
#include "net/position_set.h"
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

  RoutingTable();

  // True if the identifier is known: `route` then becomes the stored one. Otherwise `route` is
  // stored with it. Kept: the first equal entry counts, unused and blanked entries included, so
  // that an identifier of all zeros or all blanks meets one of those.
  bool seen_guid(std::string_view guid, Route& route);

  // Whether an entry names the connection.
  [[nodiscard]] bool names(std::size_t connection) const;

  // Blanks the identifiers of a connection that closed and takes its index out.
  void clear_routes(std::size_t connection);

 private:
  using Guid = std::array<std::uint64_t, 2>;  // the sixteen bytes as they lie in memory
  static_assert(sizeof(Guid) == kGuidSize);
  struct Entry {
    Guid guid{};
    Route route;
  };

  [[nodiscard]] int find(const Guid& guid) const;
  void set_guid(std::size_t position, const Guid& guid);

  std::array<Entry, kEntries> entries_{};
  std::size_t write_position_ = 0;
  // Only these two identifiers can stand in several entries.
  PositionSet<kEntries> zeros_;
  PositionSet<kEntries> blanks_;
  GuidIndex others_;
};

}  // namespace velmora
