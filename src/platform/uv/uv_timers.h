// The timers of one loop that are on, in the order in which they are due. One libuv timer stands
// for all of them, so that a connection, which has one, needs no handle of libuv's for it. The
// loop owns it; the timers own themselves and take themselves out. Times are the loop's, in
// milliseconds.
#pragma once

#include <uv.h>

#include <cstdint>
#include <map>
#include <utility>

#include "platform/uv/uv_handle.h"

namespace velmora::uv {

class UvTimer;

class UvTimers {
 public:
  explicit UvTimers(uv_loop_t& loop);

  // A timer's place among those that wait, which it keeps while it is off: starting one needs no
  // memory and cannot fail.
  using Due = std::pair<std::int64_t, std::uint64_t>;  // when, and the number of its start
  using Waiting = std::map<Due, UvTimer*>;
  using Place = Waiting::node_type;
  static Place make_place(UvTimer& timer);

  // The place is filled in; returns when the timer is due.
  Due add(Place place, std::int64_t due_ms);
  Place remove(const Due& due);
  // Has the system wake the loop for the first that is due; before the loop sleeps.
  void arm();

 private:
  void tick();

  uv_loop_t& loop_;
  Handle<uv_timer_t> handle_;
  Waiting waiting_;  // of those due together the first started comes first
  std::uint64_t starts_ = 0;
  std::int64_t armed_ms_ = 0;  // when it rings; 0 for not at all
};

}  // namespace velmora::uv
