// The event loop as the engine gets it: the platform's own, with a trap around every tick and every
// continuation. It is the last one; procedures trap their own errors where they know what to do
// about them. What was posted and has not run when it goes does not run.
#pragma once

#include "platform/debug_log.h"
#include "platform/event_loop.h"

namespace velmora {

class TrappedLoop : public EventLoop {
 public:
  TrappedLoop(EventLoop& loop, DebugLog& log) : loop_(loop), log_(log) {}

  std::unique_ptr<Timer> make_timer(int interval_ms, std::function<void()> on_tick) override;
  void post(std::function<void()> continuation) override;
  [[nodiscard]] std::int64_t now_ms() const override { return loop_.now_ms(); }
  [[nodiscard]] LocalTime local_time() const override { return loop_.local_time(); }

 private:
  EventLoop& loop_;
  DebugLog& log_;
  std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace velmora
