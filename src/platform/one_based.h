// A program-wide array: elements 1 to upper_bound(), reached only through a bounds-checked accessor
// that raises "Subscript out of range". It has a most that it may hold; growing beyond that raises
// "Out of memory" and leaves the array as it was. It owns its elements.
#pragma once

#include <cstddef>
#include <limits>
#include <vector>

#include "platform/error.h"

namespace velmora {

template <class T>
class OneBased {
 public:
  explicit OneBased(std::size_t most = std::numeric_limits<std::int32_t>::max()) : most_(most) {}

  [[nodiscard]] std::size_t upper_bound() const { return items_.size(); }
  [[nodiscard]] bool has(std::size_t index) const { return index >= 1 && index <= items_.size(); }

  T& at(std::size_t index) {
    if (!has(index)) throw PlatformError(Errc::subscript_out_of_range);
    return items_[index - 1];
  }
  const T& at(std::size_t index) const {
    if (!has(index)) throw PlatformError(Errc::subscript_out_of_range);
    return items_[index - 1];
  }

  // Sets the upper bound, keeping the elements that remain.
  void resize(std::size_t upper_bound) {
    if (upper_bound > most_) throw PlatformError(Errc::out_of_memory);
    items_.resize(upper_bound);
  }
  void reserve(std::size_t upper_bound) { items_.reserve(upper_bound); }
  // Raises the upper bound to at least the index.
  void grow_to(std::size_t index) {
    if (index > items_.size()) resize(index);
  }
  void clear() {
    items_.clear();
    items_.shrink_to_fit();
  }

  auto begin() { return items_.begin(); }
  auto end() { return items_.end(); }
  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

 private:
  std::size_t most_;
  std::vector<T> items_;
};

}  // namespace velmora
