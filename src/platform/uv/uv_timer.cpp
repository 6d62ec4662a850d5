#include "platform/uv/uv_timer.h"

#include <utility>

#include "platform/uv/uv_loop.h"

namespace velmora::uv {

UvTimer::UvTimer(UvLoop& loop, int interval_ms, std::function<void()> on_tick)
    : loop_(loop),
      interval_ms_(interval_ms),
      on_tick_(std::make_shared<std::function<void()>>(std::move(on_tick))),
      handle_(make_handle<uv_timer_t>(
          this, [&](uv_timer_t* handle) { return uv_timer_init(loop_.native(), handle); })) {}

void UvTimer::set_interval(int interval_ms) {
  interval_ms_ = interval_ms;
  if (!enabled_) return;
  stop();
  start();
}

void UvTimer::set_enabled(bool enabled) {
  if (enabled == enabled_) return;
  enabled_ = enabled;
  if (enabled) {
    start();
  } else {
    stop();
  }
}

void UvTimer::start() {
  if (interval_ms_ <= 0) return post_tick();
  due_ms_ = loop_.now_ms() + interval_ms_;
  arm();
}

void UvTimer::stop() {
  uv_timer_stop(handle_.get());
  posted_.reset();
}

// libuv counts from the time at which the loop last looked at the clock.
void UvTimer::arm() {
  const std::int64_t wait_ms = due_ms_ - static_cast<std::int64_t>(uv_now(loop_.native()));
  uv_timer_start(
      handle_.get(),
      [](uv_timer_t* handle) noexcept { static_cast<UvTimer*>(handle->data)->tick(); },
      wait_ms > 0 ? static_cast<std::uint64_t>(wait_ms) : 0, 0);
}

// A libuv timer without a wait that is started in its own callback would keep the loop from ever
// looking for other events.
void UvTimer::post_tick() {
  posted_ = std::make_shared<int>();
  loop_.post([this, posted = std::weak_ptr<int>(posted_)] {
    if (!posted.expired()) tick();
  });
}

void UvTimer::tick() {
  if (interval_ms_ > 0) {
    const auto now_ms = static_cast<std::int64_t>(uv_now(loop_.native()));
    due_ms_ += interval_ms_;
    if (due_ms_ <= now_ms) due_ms_ += ((now_ms - due_ms_) / interval_ms_ + 1) * interval_ms_;
    arm();
  } else {
    post_tick();
  }
  const auto on_tick = on_tick_;  // the tick may destroy the timer
  (*on_tick)();
}

}  // namespace velmora::uv
