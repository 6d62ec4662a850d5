// What the engine asks of the one event loop: timers, continuations, the clock. Everything runs on
// one thread; a handler runs to completion and never blocks. Not a scheduler: there are no
// priorities, and nothing here waits.
#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <memory>

namespace velmora {

// A periodic timer, off when made. Enabling a timer that is off starts its interval anew; enabling
// one that is on changes nothing. Setting the interval of a timer that is on starts it anew.
// An interval of 0 ticks once every turn of the loop. Ticks are due at multiples of the interval
// from the start; missed ones are not made up. It may be stopped or destroyed inside its own tick.
class Timer {
 public:
  virtual ~Timer() = default;
  virtual void set_interval(int interval_ms) = 0;
  [[nodiscard]] virtual int interval() const = 0;
  virtual void set_enabled(bool enabled) = 0;
  [[nodiscard]] virtual bool enabled() const = 0;
};

// Civil time of the machine's zone, for texts and identifiers that people read.
struct LocalTime {
  int year = 1970;
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
  auto operator<=>(const LocalTime&) const = default;
};

class EventLoop {
 public:
  virtual ~EventLoop() = default;

  virtual std::unique_ptr<Timer> make_timer(int interval_ms, std::function<void()> on_tick) = 0;

  // Runs the continuation in the next turn, after events that are already pending.
  virtual void post(std::function<void()> continuation) = 0;

  // Milliseconds of a clock that never goes back; only differences mean anything.
  [[nodiscard]] virtual std::int64_t now_ms() const = 0;
  [[nodiscard]] virtual LocalTime local_time() const = 0;
};

}  // namespace velmora
