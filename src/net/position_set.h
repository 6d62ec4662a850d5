// A set of positions 0 to N - 1 that tells its smallest at once. No memory of its own beyond N
// bits.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace velmora {

template <std::size_t N>
class PositionSet {
 public:
  void insert(std::size_t position) { words_[position / 64] |= bit(position); }
  void erase(std::size_t position) { words_[position / 64] &= ~bit(position); }
  // -1 when the set is empty.
  [[nodiscard]] int smallest() const {
    for (std::size_t word = 0; word < words_.size(); ++word) {
      if (words_[word] != 0) return static_cast<int>(word * 64) + std::countr_zero(words_[word]);
    }
    return -1;
  }

 private:
  static constexpr std::uint64_t bit(std::size_t position) {
    return std::uint64_t{1} << (position % 64);
  }
  std::array<std::uint64_t, (N + 63) / 64> words_{};
};

}  // namespace velmora
