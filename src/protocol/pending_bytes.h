// What a connection's stream leaves behind the last whole descriptor: the bytes of one whose rest
// has yet to arrive, 23 + 32,000 at most. One element a connection owns one, and uses it only while
// whole descriptors are wanted. It handles none and writes no line: what will never be whole (a
// length that no descriptor has) is handed on for the framing to tell of and drop.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace velmora {

// A descriptor whose rest does not come within this of its last bytes was cut short by whoever
// sent it, and what comes next is another one.
inline constexpr std::int64_t kMostPendingMs = 10'000;

// Header and declared payload of the descriptor that the bytes (a header at least) begin with. A
// length beyond every payload is no length: then it is all bytes that are there.
std::size_t believed_size(std::string_view bytes);

class PendingBytes {
 public:
  // Whether the next byte is the first of a descriptor.
  [[nodiscard]] bool in_step() const { return bytes_.empty() && skip_ == 0; }

  // What is whole with this chunk; it may be nothing. A view into the chunk, or into `joined`, an
  // empty string that takes what waited and the chunk behind it.
  std::string_view complete(std::string_view chunk, std::int64_t now_ms, std::string& joined);

  void clear();  // its memory too

 private:
  std::size_t whole(std::string_view bytes);

  std::string bytes_;
  std::size_t skip_ = 0;  // bytes to come of one that is too long to wait for
  std::int64_t last_ms_ = 0;
};

}  // namespace velmora
