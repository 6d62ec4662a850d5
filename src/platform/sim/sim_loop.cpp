#include "platform/sim/sim_loop.h"

#include <utility>

namespace velmora::sim {
namespace {

class SimTimer : public Timer {
 public:
  SimTimer(Scheduler& scheduler, int interval_ms, std::function<void()> on_tick)
      : scheduler_(scheduler),
        interval_ms_(interval_ms),
        on_tick_(std::make_shared<std::function<void()>>(std::move(on_tick))) {}
  ~SimTimer() override { SimTimer::set_enabled(false); }

  void set_interval(int interval_ms) override {
    interval_ms_ = interval_ms;
    if (!enabled_) return;
    set_enabled(false);
    set_enabled(true);
  }
  [[nodiscard]] int interval() const override { return interval_ms_; }
  void set_enabled(bool enabled) override {
    if (enabled == enabled_) return;
    enabled_ = enabled;
    if (enabled) {
      plan();
    } else {
      scheduler_.cancel(due_);
    }
  }
  [[nodiscard]] bool enabled() const override { return enabled_; }

 private:
  void plan() {
    const std::int64_t wait_us = interval_ms_ > 0 ? std::int64_t{interval_ms_} * 1000 : kTurnUs;
    due_ = scheduler_.after(wait_us, [this] { tick(); });
  }
  void tick() {
    plan();
    const auto on_tick = on_tick_;  // the tick may destroy the timer
    (*on_tick)();
  }

  Scheduler& scheduler_;
  int interval_ms_;
  std::shared_ptr<std::function<void()>> on_tick_;
  bool enabled_ = false;
  Scheduler::Key due_;
};

}  // namespace

std::unique_ptr<Timer> SimLoop::make_timer(int interval_ms, std::function<void()> on_tick) {
  return std::make_unique<SimTimer>(scheduler_, interval_ms, std::move(on_tick));
}

}  // namespace velmora::sim
