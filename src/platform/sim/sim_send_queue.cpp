#include "platform/sim/sim_send_queue.h"

#include <utility>

namespace velmora::sim {

void SendQueue::write(std::string_view data, bool alone) {
  if (data.empty()) return;
  written_ += data.size();
  if (alone || turn_.empty() || turn_.back().alone) {
    turn_.push_back({std::string(data), alone});
  } else {
    turn_.back().bytes += data;
  }
}

bool SendQueue::end_turn() {
  bool last = false;
  while (!last && !turn_.empty()) {
    last = turn_.front().alone;
    written_ -= turn_.front().bytes.size();
    push(std::move(turn_.front().bytes));
    turn_.pop_front();
  }
  return !turn_.empty();
}

void SendQueue::push(std::string segment) {
  if (segment.empty()) return;
  ready_ += segment.size();
  segments_.push_back(std::move(segment));
}

std::string SendQueue::take(std::size_t most) {
  std::string& front = segments_.front();
  std::string taken;
  if (front.size() <= most) {
    taken = std::move(front);
    segments_.pop_front();
  } else {
    taken = front.substr(0, most);
    front.erase(0, most);
  }
  ready_ -= taken.size();
  return taken;
}

void SendQueue::clear() {
  turn_.clear();
  segments_.clear();
  written_ = 0;
  ready_ = 0;
}

}  // namespace velmora::sim
