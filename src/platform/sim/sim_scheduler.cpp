#include "platform/sim/sim_scheduler.h"

#include <algorithm>
#include <utility>

namespace velmora::sim {
namespace {

constexpr int kMostTurnsAtOneTime = 1000;

class Running {
 public:
  explicit Running(bool& flag) : flag_(flag) { flag_ = true; }
  ~Running() { flag_ = false; }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

 private:
  bool& flag_;
};

}  // namespace

Scheduler::Key Scheduler::at(std::int64_t time_us, Task task) {
  const Key key{std::max(time_us, now_us_), next_sequence_++};
  events_.emplace(key, std::move(task));
  return key;
}

void Scheduler::next_turn(Task task) {
  const bool move_on = ++turns_now_ > kMostTurnsAtOneTime;
  after(move_on ? 1 : 0, std::move(task));
}

void Scheduler::after_event(Task task) {
  if (running_) {
    after_event_.push_back(std::move(task));
  } else {
    at(now_us_, std::move(task));
  }
}

bool Scheduler::run_next(std::int64_t until_us) {
  if (events_.empty() || events_.begin()->first.time_us > until_us) return false;
  auto event = events_.extract(events_.begin());
  move_clock_to(event.key().time_us);
  const Running running(running_);
  event.mapped()();
  run_after_event();
  return true;
}

void Scheduler::run_after_event() {
  for (std::size_t i = 0; i < after_event_.size(); ++i) {
    const Task task = std::move(after_event_[i]);  // it may add more, which moves the list
    task();
  }
  after_event_.clear();
}

void Scheduler::move_clock_to(std::int64_t time_us) {
  if (time_us <= now_us_) return;
  now_us_ = time_us;
  turns_now_ = 0;
}

void Scheduler::clear() {
  // A task may own things whose end asks for further events.
  while (!events_.empty() || !after_event_.empty()) {
    const auto events = std::exchange(events_, {});
    const auto after_event = std::exchange(after_event_, {});
  }
}

}  // namespace velmora::sim
