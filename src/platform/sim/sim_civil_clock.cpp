#include "platform/sim/sim_civil_clock.h"

#include <chrono>

namespace velmora::sim {

namespace chrono = std::chrono;

void CivilClock::set(const LocalTime& time, std::int64_t now_us) {
  const chrono::sys_days day = chrono::year(time.year) / time.month / time.day;
  const chrono::microseconds civil = day.time_since_epoch() + chrono::hours(time.hour) +
                                     chrono::minutes(time.minute) + chrono::seconds(time.second);
  start_us_ = civil.count() - now_us;
}

LocalTime CivilClock::at(std::int64_t now_us) const {
  const chrono::sys_time<chrono::microseconds> time{chrono::microseconds(start_us_ + now_us)};
  const auto day = chrono::floor<chrono::days>(time);
  const chrono::year_month_day date{day};
  const chrono::hh_mm_ss clock{chrono::floor<chrono::seconds>(time - day)};
  return {static_cast<int>(date.year()),
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day())),
          static_cast<int>(clock.hours().count()),
          static_cast<int>(clock.minutes().count()),
          static_cast<int>(clock.seconds().count())};
}

}  // namespace velmora::sim
