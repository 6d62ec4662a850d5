// The Timer of the real loop. It waits in the loop's UvTimers from the time at which a tick was
// due, so that an interval does not drift with the work of its ticks. A servent has one for every
// connection, so it is small.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/event_loop.h"
#include "platform/uv/uv_timers.h"

namespace velmora::uv {

class UvLoop;

class UvTimer : public Timer {
 public:
  UvTimer(UvLoop& loop, int interval_ms, std::function<void()> on_tick);
  ~UvTimer() override;
  UvTimer(const UvTimer&) = delete;
  UvTimer& operator=(const UvTimer&) = delete;

  void set_interval(int interval_ms) override;
  [[nodiscard]] int interval() const override { return interval_ms_; }
  void set_enabled(bool enabled) override;
  [[nodiscard]] bool enabled() const override { return enabled_; }

  // For the loop's timers, when it is due.
  void tick(std::int64_t now_ms);

 private:
  void start();
  void stop();
  void post_tick();
  void call();

  UvLoop& loop_;
  int interval_ms_;
  bool enabled_ = false;
  std::function<void()> on_tick_;
  UvTimers::Due due_;            // while it waits
  UvTimers::Place place_;        // while it does not
  std::shared_ptr<int> posted_;  // a posted tick counts only while this lives
};

}  // namespace velmora::uv
