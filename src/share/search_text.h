// A text prepared for searching: upper-cased, with a small set of the byte pairs it holds, so that
// most texts that do not hold a word are passed over without being read. Letters are those of
// ASCII; every other byte stands for itself.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velmora {

class SearchText {
 public:
  SearchText() = default;
  explicit SearchText(std::string_view text);

  // Whether the word occurs anywhere; the empty word always does.
  [[nodiscard]] bool holds(const SearchText& word) const {
    return (word.pairs_ & ~pairs_) == 0 && upper_.find(word.upper_) != std::string::npos;
  }

 private:
  std::string upper_;
  std::uint64_t pairs_ = 0;  // one bit for each pair of neighbouring bytes, hashed
};

}  // namespace velmora
