// A fuzz input taken apart: choices, numbers and byte strings, so that what is mutated is a list of
// events as well as their bytes. What the input lacks reads as zeros. `require` ends the run as a
// finding. Nothing here knows the program.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace velmora::fuzz {

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size)
      : text_(reinterpret_cast<const char*>(data), size) {}

  [[nodiscard]] bool empty() const { return text_.empty(); }
  unsigned byte() {
    const std::string_view taken = take(1);
    return taken.empty() ? 0 : static_cast<unsigned char>(taken.front());
  }
  std::uint32_t number() {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8 | byte();
    return value;
  }
  // A byte for the length (beyond 200 it counts in blocks of 256), and so many bytes.
  std::string_view piece() {
    const unsigned length = byte();
    return take(length <= 200 ? length : std::size_t{length - 200} * 256);
  }
  std::string_view rest() { return take(text_.size()); }

 private:
  std::string_view take(std::size_t size) {
    const std::string_view taken = text_.substr(0, std::min(size, text_.size()));
    text_.remove_prefix(taken.size());
    return taken;
  }

  std::string_view text_;
};

inline void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "fuzz: does not hold: %s\n", what);
  std::abort();
}

}  // namespace velmora::fuzz
