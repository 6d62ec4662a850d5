// How one network writes what the loads send: the servents' own descriptors as they are, or the
// same bytes as messages of a publish-and-subscribe server, on one topic that every connection
// publishes to and subscribes, without its own copies. Frames in, frames out; no socket.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace velmora::bench {

// What a stretch of received bytes held.
struct Received {
  std::size_t used = 0;        // bytes of whole frames
  std::size_t copy_bytes = 0;  // of frames that are copies (or pongs)
  std::uint64_t copies = 0;
  std::uint64_t pongs = 0;
  std::uint64_t identifier_sum = 0;
  bool wants_pong = false;  // the server asks whether the client lives
};

class Frames {
 public:
  virtual ~Frames() = default;
  [[nodiscard]] virtual std::string hello() const = 0;
  // Whether the answer to the greeting has come whole.
  [[nodiscard]] virtual bool welcomed(std::string_view received) const = 0;
  virtual void append(std::string& out, std::string_view descriptor) const = 0;
  [[nodiscard]] virtual std::size_t copy_bytes(std::size_t descriptor) const = 0;
  [[nodiscard]] virtual bool answers_pings() const { return false; }
  // Copies may be counted by their bytes, unread: nothing else comes but pongs.
  [[nodiscard]] virtual bool only_copies() const { return true; }
  [[nodiscard]] virtual Received read(std::string_view bytes) const = 0;
};

// "velmora", "bare", "nats" or "mqtt"; none for any other name.
std::unique_ptr<Frames> make_frames(std::string_view name);

}  // namespace velmora::bench
