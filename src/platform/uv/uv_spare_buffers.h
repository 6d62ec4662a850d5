// Memory of gathered bytes that have left, kept for the next ones: without it every connection asks
// for its memory anew in every turn, and with memory of its own each an idle one would keep it.
// Bounded in number and bytes. The loop owns one for all that is written on it.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace velmora::uv {

class UvSpareBuffers {
 public:
  UvSpareBuffers() { spare_.reserve(kMost); }

  // An empty string, with memory if there is some.
  std::string take() {
    if (spare_.empty()) return {};
    std::string buffer = std::move(spare_.back());
    spare_.pop_back();
    bytes_ -= buffer.capacity();
    return buffer;
  }
  void give(std::string buffer) {
    if (spare_.size() == kMost || buffer.capacity() > kLargest) return;
    if (bytes_ + buffer.capacity() > kMostBytes) return;
    buffer.clear();
    bytes_ += buffer.capacity();
    spare_.push_back(std::move(buffer));
  }

 private:
  static constexpr std::size_t kMost = 1024;
  static constexpr std::size_t kLargest = std::size_t{128} << 10;  // bytes of one
  static constexpr std::size_t kMostBytes = std::size_t{8} << 20;

  std::vector<std::string> spare_;
  std::size_t bytes_ = 0;  // capacity of all of them
};

}  // namespace velmora::uv
