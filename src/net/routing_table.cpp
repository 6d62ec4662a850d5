#include "net/routing_table.h"

#include <algorithm>
#include <cstring>

namespace velmora {

bool RoutingTable::seen_guid(std::string_view guid, Route& route) {
  std::array<char, kGuidSize> key;
  key.fill(' ');
  std::copy_n(guid.data(), std::min(guid.size(), kGuidSize), key.data());
  for (const Entry& entry : entries_) {
    if (std::memcmp(entry.guid.data(), key.data(), kGuidSize) == 0) {
      route = entry.route;
      return true;
    }
  }
  entries_[write_position_] = Entry{key, route};
  write_position_ = (write_position_ + 1) % kEntries;
  return false;
}

void RoutingTable::clear_routes(std::size_t connection) {
  for (Entry& entry : entries_) {
    if (entry.route.connection > 0 &&
        static_cast<std::size_t>(entry.route.connection) == connection) {
      entry.guid.fill(' ');
      entry.route.connection = 0;
    }
  }
}

}  // namespace velmora
