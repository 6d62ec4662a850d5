// Arithmetic with civil dates; comparison is that of LocalTime itself.
#pragma once

#include "platform/event_loop.h"

namespace velmora {

// The same time of day so many days before, by the calendar.
LocalTime days_before(const LocalTime& time, int days);

}  // namespace velmora
