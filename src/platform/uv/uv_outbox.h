// The bytes that a stream has still to send: gathered as they are written, handed to the kernel
// when the owner flushes. A string that leaves alone keeps its own write and a turn of its own,
// before and behind it. Belongs to the owner of the stream, which outlives it.
#pragma once

#include <uv.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
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
  // `on_taken` says that what had to wait need not wait any longer: flush again.
  UvOutbox(UvLoop& loop, uv_stream_t* stream, std::function<void()> on_taken);
  ~UvOutbox();
  UvOutbox(const UvOutbox&) = delete;
  UvOutbox& operator=(const UvOutbox&) = delete;

  void push(std::string_view data, bool alone);

  enum class Left {
    all,
    waits,   // the kernel is full; on_taken follows
    held,    // the rest leaves a little later; on_taken or the next turn follows
    failed,  // the stream cannot send any more; what was queued is gone
  };
  Left flush();

  // Bytes that the kernel has not taken.
  [[nodiscard]] std::size_t unsent() const {
    return bytes_ + (in_flight_ == nullptr ? 0 : uv_stream_get_write_queue_size(stream_));
  }

 private:
  struct Segment {
    std::string bytes;
    bool alone;
  };
  struct Request;

  void gather();
  Segment take_first();
  bool send_waiting(Segment segment, std::size_t sent);
  void left(bool alone);
  Left fail();
  void taken(int status, bool alone);

  std::string gathered_;   // leaves behind the segments
  std::size_t bytes_ = 0;  // in both
  Request* in_flight_ = nullptr;
  uv_stream_t* stream_;
  bool failed_ = false;
  UvLoop& loop_;
  UvSpareBuffers& spares_;
  std::vector<Segment> segments_;  // in the order in which they leave
  std::function<void()> on_taken_;
  std::optional<std::uint64_t> last_left_in_;  // the turn
  std::unique_ptr<Timer> hold_;                // runs while what follows a lone string waits
};

}  // namespace velmora::uv
