// The bytes that a stream has still to send: gathered as they are written, handed to the kernel
// when the owner flushes. They leave in pieces that hold whole strings and fit one segment of the
// connection, and the kernel keeps the pieces apart: whatever it has queued for the reader at any
// time ends where a string ends, except inside a string that is longer than a segment. A string
// that leaves alone keeps a turn of its own, before and behind it. Belongs to the owner of the
// descriptor, which outlives it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/event_loop.h"
#include "platform/uv/uv_spare_buffers.h"

namespace velmora::uv {

class UvLoop;

inline constexpr std::size_t kGatheredBytes = std::size_t{64} << 10;  // leave without waiting

class UvOutbox {
 public:
  // `on_released` says that what was held need not wait any longer: flush again.
  UvOutbox(UvLoop& loop, int descriptor, std::function<void()> on_released);

  // A string that is long enough to leave without waiting, behind nothing else, leaves at once.
  void push(std::string_view data, bool alone);
  // Strings in a row; `ends` are the offsets at which they end.
  void push_run(std::string_view data, std::span<const std::uint32_t> ends);

  enum class Left {
    all,
    waits,   // the kernel is full; once it has room, say so and flush again
    held,    // the rest leaves a little later; on_released or the next turn follows
    failed,  // the stream cannot send any more; what was queued is gone
  };
  Left flush();
  void room_came() { full_ = false; }

  [[nodiscard]] std::size_t unsent() const { return bytes_; }  // that the kernel has not taken
  [[nodiscard]] bool failed() const { return failed_; }

 private:
  struct Segment {
    std::string bytes;
    std::vector<std::uint32_t> ends;  // of its pieces, but the last
    bool alone = false;
  };

  void push_long(std::string_view data);
  void keep(std::string_view data);
  std::string_view leave_at_once(std::string_view data);
  std::size_t send(std::string_view bytes);
  [[nodiscard]] bool fits(std::size_t bytes) const;
  void cut();
  void gather();
  void take_first();
  void send_leaving();
  void left();
  void fail();

  Segment gathered_;             // leaves behind the segments
  std::size_t piece_begin_ = 0;  // of the last piece, in what is gathered
  std::size_t largest_piece_;    // of more than one string
  std::size_t bytes_ = 0;        // in all segments
  bool full_ = false;            // the kernel is
  bool failed_ = false;
  int descriptor_;
  UvLoop& loop_;
  UvSpareBuffers& spares_;
  Segment leaving_;
  std::size_t sent_ = 0;           // of what is leaving
  std::size_t next_end_ = 0;       // in its list
  std::vector<Segment> segments_;  // in the order in which they leave
  std::function<void()> on_released_;
  std::optional<std::uint64_t> last_left_in_;  // the turn
  std::unique_ptr<Timer> hold_;                // runs while what follows a lone string waits
};

}  // namespace velmora::uv
