#include "net/servent_routes.h"

namespace velmora {

void ServentRoutes::enter(std::string_view servent, const Way& way) {
  GuidBytes key;
  key = servent;
  const auto known = ways_.find(key);
  if (known != ways_.end()) {
    known->second = way;
    return;
  }
  if (write_position_ == ring_.size()) ring_.emplace_back();
  ways_.emplace(key, way);
  if (ways_.size() > kEntries) ways_.erase(ring_[write_position_]);
  ring_[write_position_] = key;
  write_position_ = (write_position_ + 1) % kEntries;
}

const Way* ServentRoutes::way_to(std::string_view servent) const {
  GuidBytes key;
  key = servent;
  const auto known = ways_.find(key);
  return known == ways_.end() ? nullptr : &known->second;
}

void ServentRoutes::clear() {
  ways_ = {};
  std::vector<GuidBytes>().swap(ring_);
  write_position_ = 0;
}

}  // namespace velmora
