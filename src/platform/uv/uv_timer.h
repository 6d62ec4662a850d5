// The Timer of the real loop. It is armed from the time at which a tick was due, so that an
// interval does not drift with the work of its ticks.
#pragma once

#include <uv.h>

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/event_loop.h"
#include "platform/uv/uv_handle.h"

namespace velmora::uv {

class UvLoop;

class UvTimer : public Timer {
 public:
  UvTimer(UvLoop& loop, int interval_ms, std::function<void()> on_tick);

  void set_interval(int interval_ms) override;
  [[nodiscard]] int interval() const override { return interval_ms_; }
  void set_enabled(bool enabled) override;
  [[nodiscard]] bool enabled() const override { return enabled_; }

 private:
  void start();
  void stop();
  void arm();
  void post_tick();
  void tick();

  UvLoop& loop_;
  int interval_ms_;
  std::shared_ptr<std::function<void()>> on_tick_;
  bool enabled_ = false;
  std::int64_t due_ms_ = 0;
  Handle<uv_timer_t> handle_;
  std::shared_ptr<int> posted_;  // a posted tick counts only while this lives
};

}  // namespace velmora::uv
