// The civil time of a simulated world, moving with its virtual clock.
#pragma once

#include <cstdint>

#include "platform/event_loop.h"

namespace velmora::sim {

class CivilClock {
 public:
  void set(const LocalTime& time, std::int64_t now_us);
  [[nodiscard]] LocalTime at(std::int64_t now_us) const;

 private:
  std::int64_t start_us_ = 962'373'900'000'000;  // 2000-06-30 14:05:00, in us of the civil calendar
};

}  // namespace velmora::sim
