// The event loop of one simulated host: its timers and continuations are events of the world.
#pragma once

#include "platform/event_loop.h"
#include "platform/sim/sim_civil_clock.h"
#include "platform/sim/sim_scheduler.h"

namespace velmora::sim {

// Turns of a loop that has something to do in each; a timer with interval 0 ticks this often.
inline constexpr std::int64_t kTurnUs = 100;

class SimLoop : public EventLoop {
 public:
  SimLoop(Scheduler& scheduler, const CivilClock& civil) : scheduler_(scheduler), civil_(civil) {}

  std::unique_ptr<Timer> make_timer(int interval_ms, std::function<void()> on_tick) override;
  void post(std::function<void()> continuation) override {
    scheduler_.next_turn(std::move(continuation));
  }
  [[nodiscard]] std::int64_t now_ms() const override { return scheduler_.now_us() / 1000; }
  [[nodiscard]] LocalTime local_time() const override { return civil_.at(scheduler_.now_us()); }

 private:
  Scheduler& scheduler_;
  const CivilClock& civil_;
};

}  // namespace velmora::sim
