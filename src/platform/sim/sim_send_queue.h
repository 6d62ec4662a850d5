// What one end of a connection has still to send, cut into segments: the bytes written in this turn
// of the loop, and the segments that have left the program. It knows no time and no peer.
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

namespace velmora::sim {

class SendQueue {
 public:
  // Gathers with what this turn has written; alone: a segment of its own.
  void write(std::string_view data, bool alone);
  // Segments leave, none behind one that leaves alone. True: some remain for the next turn.
  bool end_turn();
  // A segment that does not wait for the end of a turn.
  void push(std::string segment);

  // The next segment, or the beginning of it that is not longer than `most`; needs ready() > 0.
  std::string take(std::size_t most);
  void clear();

  [[nodiscard]] std::size_t written() const { return written_; }  // bytes waiting for their turn
  [[nodiscard]] std::size_t ready() const { return ready_; }      // bytes that have left
  [[nodiscard]] bool empty() const { return written_ + ready_ == 0; }

 private:
  struct Written {
    std::string bytes;
    bool alone;
  };
  std::deque<Written> turn_;
  std::deque<std::string> segments_;
  std::size_t written_ = 0;
  std::size_t ready_ = 0;
};

}  // namespace velmora::sim
