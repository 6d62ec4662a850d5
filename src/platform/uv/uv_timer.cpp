#include "platform/uv/uv_timer.h"

#include <algorithm>
#include <utility>

#include "platform/uv/uv_loop.h"
#include "platform/uv/uv_timers.h"

namespace velmora::uv {

UvTimer::UvTimer(UvLoop& loop, int interval_ms, std::function<void()> on_tick)
    : loop_(loop),
      interval_ms_(interval_ms),
      on_tick_(std::move(on_tick)),
      place_(UvTimers::make_place(*this)) {}

UvTimer::~UvTimer() { stop(); }

void UvTimer::set_interval(int interval_ms) {
  if (enabled_) stop();
  interval_ms_ = interval_ms;
  if (enabled_) start();
}

void UvTimer::set_enabled(bool enabled) {
  if (enabled == enabled_) return;
  if (enabled) {
    start();
  } else {
    stop();
  }
  enabled_ = enabled;
}

void UvTimer::start() {
  if (interval_ms_ <= 0) return post_tick();
  due_ = loop_.timers().add(std::move(place_), loop_.now_ms() + interval_ms_);
}

void UvTimer::stop() {
  if (place_.empty()) place_ = loop_.timers().remove(due_);
  posted_.reset();
}

// A timer without a wait that is due again at once would keep the loop from ever looking for other
// events.
void UvTimer::post_tick() {
  posted_ = std::make_shared<int>();
  loop_.post([this, posted = std::weak_ptr<int>(posted_)] {
    if (posted.expired()) return;
    post_tick();
    call();
  });
}

// The next tick is the first multiple of the interval that is still to come.
void UvTimer::tick(std::int64_t now_ms) {
  const std::int64_t was_due_ms = due_.first;
  const std::int64_t intervals = std::max<std::int64_t>(now_ms - was_due_ms, 0) / interval_ms_ + 1;
  stop();
  due_ = loop_.timers().add(std::move(place_), was_due_ms + intervals * interval_ms_);
  call();
}

void UvTimer::call() {
  const std::function<void()> on_tick = on_tick_;  // the tick may destroy the timer
  on_tick();
}

}  // namespace velmora::uv
