// The virtual clock and the queue of what is to happen, in microseconds: ordered by time, then by
// the order in which it was asked for. One event is one turn of a host's loop; what asked to run
// after the event runs before the next one. Owned by the world; never waits for real time.
#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace velmora::sim {

class Scheduler {
 public:
  using Task = std::function<void()>;
  struct Key {
    std::int64_t time_us = 0;
    std::uint64_t sequence = 0;
    auto operator<=>(const Key&) const = default;
  };

  [[nodiscard]] std::int64_t now_us() const { return now_us_; }

  Key at(std::int64_t time_us, Task task);  // a time that has passed means now
  Key after(std::int64_t delay_us, Task task) { return at(now_us_ + delay_us, std::move(task)); }
  void cancel(const Key& key) { events_.erase(key); }

  // Now, behind everything that is already due. Time moves on by itself after very many of these,
  // so that a continuation that goes on for ever does not stop the world.
  void next_turn(Task task);

  // As soon as the running event has ended; outside an event, as an event of its own.
  void after_event(Task task);

  // Runs one event due until then (inclusive); false if there is none.
  bool run_next(std::int64_t until_us);
  void move_clock_to(std::int64_t time_us);
  [[nodiscard]] bool running() const { return running_; }

  // Forgets every event.
  void clear();

 private:
  void run_after_event();

  std::int64_t now_us_ = 0;
  std::uint64_t next_sequence_ = 1;  // a default Key names no event
  int turns_now_ = 0;
  bool running_ = false;
  std::map<Key, Task> events_;
  std::vector<Task> after_event_;
};

}  // namespace velmora::sim
