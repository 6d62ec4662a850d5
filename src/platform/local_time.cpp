#include "platform/local_time.h"

#include <chrono>

namespace velmora {

LocalTime days_before(const LocalTime& time, int days) {
  namespace chrono = std::chrono;
  const chrono::sys_days day = chrono::year(time.year) / time.month / time.day;
  const chrono::year_month_day date{day - chrono::days(days)};
  LocalTime before = time;
  before.year = static_cast<int>(date.year());
  before.month = static_cast<int>(static_cast<unsigned>(date.month()));
  before.day = static_cast<int>(static_cast<unsigned>(date.day()));
  return before;
}

}  // namespace velmora
