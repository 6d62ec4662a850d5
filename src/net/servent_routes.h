// On which connection the newest hit of each servent came, by the servent's identifier: the way of
// a push. At most 8,192 servents, the one that was entered first makes room. It sends nothing.
#pragma once

#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "net/way.h"
#include "protocol/guid_bytes.h"

namespace velmora {

class ServentRoutes {
 public:
  static constexpr std::size_t kEntries = 8192;

  void enter(std::string_view servent, const Way& way);
  // Null when no hit of the servent is remembered.
  [[nodiscard]] const Way* way_to(std::string_view servent) const;
  void clear();

 private:
  std::unordered_map<GuidBytes, Way, GuidHash> ways_;
  std::vector<GuidBytes> ring_;  // the servents in the order of entering
  std::size_t write_position_ = 0;
};

}  // namespace velmora
