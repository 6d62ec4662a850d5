// The real event loop, libuv's, for one servent; several may live in one process. Not thread-safe.
// It must outlive every timer, network and channel made on it; when it is destroyed, continuations
// that wait are dropped unrun. While nothing is posted and no timer is due it sleeps.
// A turn ends just before the loop asks the system for events, and again after those were handled.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "platform/event_loop.h"
#include "platform/uv/uv_spare_buffers.h"

struct uv_loop_s;

namespace velmora::uv {

class UvTimers;

// Something that gathers work (writes) and gets rid of it when a turn ends. It must not call
// anybody who could gather more.
class TurnEnd {
 public:
  virtual ~TurnEnd() = default;
  virtual void on_turn_end() = 0;
};

class UvLoop : public EventLoop {
 public:
  UvLoop();  // also makes the process ignore SIGPIPE
  ~UvLoop() override;
  UvLoop(const UvLoop&) = delete;
  UvLoop& operator=(const UvLoop&) = delete;

  std::unique_ptr<Timer> make_timer(int interval_ms, std::function<void()> on_tick) override;
  void post(std::function<void()> continuation) override;
  [[nodiscard]] std::int64_t now_ms() const override;
  [[nodiscard]] LocalTime local_time() const override;

  void run();   // until stop()
  void stop();  // makes run() return after this turn; before run(), at once
  // Runs until the condition holds, for so many milliseconds at most; returns whether it holds.
  bool run_until(const std::function<bool()>& done, int most_ms);
  // Calls back for every SIGTERM, SIGINT and SIGHUP from now on, instead of ending the process.
  void on_signal(std::function<void()> callback);

  // For a foreign loop that runs this one: when the descriptor becomes readable, or the time-out
  // (milliseconds from now, -1 for none) has passed, turn once. Ask for the time-out after every
  // turn and after calls from outside; 0 means that there is work, or something to watch, at once.
  [[nodiscard]] int backend_descriptor() const;
  [[nodiscard]] int backend_timeout() const;
  void turn_once();

  // For the other parts of this folder.
  [[nodiscard]] uv_loop_s* native();
  void add_turn_end(TurnEnd& turn_end);
  void remove_turn_end(TurnEnd& turn_end);
  // Counts how often the loop has asked the system for events.
  [[nodiscard]] std::uint64_t turn() const;
  void request_turn();  // the loop does not sleep before its next turn
  // A read, write, connect or poll was begun: the next turn sends it, or has the system watch it.
  void work_begun();
  // One buffer for all reads, of at least this size; what it holds is valid until the next read.
  std::span<char> read_buffer(std::size_t least);
  UvSpareBuffers& spare_buffers();  // for what is written
  UvTimers& timers();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace velmora::uv
