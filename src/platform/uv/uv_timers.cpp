#include "platform/uv/uv_timers.h"

#include "platform/uv/uv_timer.h"

namespace velmora::uv {

UvTimers::UvTimers(uv_loop_t& loop)
    : loop_(loop), handle_(make_handle<uv_timer_t>(this, [&](uv_timer_t* handle) {
        return uv_timer_init(&loop, handle);
      })) {}

UvTimers::Place UvTimers::make_place(UvTimer& timer) {
  Waiting made;
  made.emplace(Due(), &timer);
  return made.extract(made.begin());
}

UvTimers::Due UvTimers::add(Place place, std::int64_t due_ms) {
  place.key() = {due_ms, ++starts_};
  return waiting_.insert(std::move(place)).position->first;
}

UvTimers::Place UvTimers::remove(const Due& due) { return waiting_.extract(due); }

void UvTimers::arm() {
  const std::int64_t first_ms = waiting_.empty() ? 0 : waiting_.begin()->first.first;
  if (first_ms == armed_ms_) return;
  armed_ms_ = first_ms;
  if (first_ms == 0) {
    uv_timer_stop(handle_.get());
    return;
  }
  // libuv counts from the time at which the loop last looked at the clock.
  const std::int64_t wait_ms = first_ms - static_cast<std::int64_t>(uv_now(&loop_));
  uv_timer_start(
      handle_.get(),
      [](uv_timer_t* handle) noexcept { static_cast<UvTimers*>(handle->data)->tick(); },
      wait_ms > 0 ? static_cast<std::uint64_t>(wait_ms) : 0, 0);
}

// Whatever is started in a tick is due later than the loop's time, so this comes to an end.
void UvTimers::tick() {
  armed_ms_ = 0;
  const auto now_ms = static_cast<std::int64_t>(uv_now(&loop_));
  while (!waiting_.empty() && waiting_.begin()->first.first <= now_ms) {
    waiting_.begin()->second->tick(now_ms);
  }
}

}  // namespace velmora::uv
