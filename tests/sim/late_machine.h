// A machine whose clock is ahead of its ticks: by so many milliseconds, and by more at every look.
#pragma once

#include "platform/platform.h"

namespace velmora::sim {

class LateMachine : public EventLoop {
 public:
  explicit LateMachine(const Platform& machine) : machine_(machine) {}

  // The machine with this loop in the place of its own.
  Platform platform() {
    return {*this,         machine_.network,  machine_.files,   machine_.boxes,
            machine_.tray, machine_.programs, machine_.control, machine_.dns};
  }
  std::unique_ptr<Timer> make_timer(int interval_ms, std::function<void()> on_tick) override {
    return machine_.loop.make_timer(interval_ms, std::move(on_tick));
  }
  void post(std::function<void()> continuation) override {
    machine_.loop.post(std::move(continuation));
  }
  [[nodiscard]] std::int64_t now_ms() const override {
    late_ms += ms_a_look;
    return machine_.loop.now_ms() + late_ms;
  }
  [[nodiscard]] LocalTime local_time() const override { return machine_.loop.local_time(); }

  mutable std::int64_t late_ms = 0;
  std::int64_t ms_a_look = 0;

 private:
  Platform machine_;
};

}  // namespace velmora::sim
