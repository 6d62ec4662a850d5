// Compares what a source sends again with what lies on disk, so that two different files of one
// name never become one. It holds the bytes expected next; none: nothing is left to compare.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace velmora {

// So many bytes before the first that is missing are asked for again.
inline constexpr std::size_t kMaxCompared = 4096;

class ResumeCheck {
 public:
  void expect(std::string bytes) {
    expected_ = std::move(bytes);
    at_ = 0;
  }
  [[nodiscard]] std::size_t left() const { return expected_.size() - at_; }

  // Takes the compared bytes off the block's beginning; false when they differ.
  bool agrees(std::string_view& block) {
    const std::size_t length = std::min(left(), block.size());
    if (block.substr(0, length) != std::string_view(expected_).substr(at_, length)) return false;
    at_ += length;
    block.remove_prefix(length);
    return true;
  }

 private:
  std::string expected_;
  std::size_t at_ = 0;
};

}  // namespace velmora
