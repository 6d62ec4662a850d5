#include "app/trapped_loop.h"

#include <utility>

#include "platform/trap.h"

namespace velmora {

std::unique_ptr<Timer> TrappedLoop::make_timer(int interval_ms, std::function<void()> on_tick) {
  return loop_.make_timer(interval_ms,
                          [&log = log_, tick = std::move(on_tick)] { trap(log, "timer: ", tick); });
}

void TrappedLoop::post(std::function<void()> continuation) {
  loop_.post([&log = log_, alive = std::weak_ptr<int>(alive_), go_on = std::move(continuation)] {
    if (!alive.expired()) trap(log, "continuation: ", go_on);
  });
}

}  // namespace velmora
