// Names as people give them to files, the same in every run: artist, title, number, sometimes audio
// information behind byte 1. For the benchmarks that search or list them.
#pragma once

#include <fmt/format.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::bench {

class MadeNames {
 public:
  std::string next() {
    std::string name = words(1 + below(2)) + " - " + words(1 + below(4));
    if (below(4) == 0) name += fmt::format(" ({})", 1950 + below(60));
    name += fmt::format(" {:05}", number_++);
    constexpr std::array<std::string_view, 5> kEndings = {".mp3", ".mp3", ".ogg", ".txt", ".jpg"};
    name += kEndings[below(kEndings.size())];
    if (name.ends_with("mp3")) name += "\00144100\001128";
    return name;
  }

  std::vector<std::string> some(std::size_t count) {
    std::vector<std::string> names;
    names.reserve(count);
    while (names.size() < count) names.push_back(next());
    return names;
  }

  std::uint64_t below(std::uint64_t bound) {
    state_ = state_ * 6364136223846793005U + 1442695040888963407U;
    return (state_ >> 33) % bound;
  }

 private:
  // Syllables put together: a few thousand different words.
  std::string words(std::uint64_t count) {
    constexpr std::array<std::string_view, 24> kSyllables = {
        "ma",  "ri", "lo",  "ten", "sha", "ko",  "ver", "da", "night", "bu", "el", "or",
        "san", "ti", "gre", "ne",  "wo",  "pla", "ci",  "um", "ist",   "ar", "he", "zy"};
    std::string text;
    for (std::uint64_t word = 0; word < count; ++word) {
      if (word > 0) text += ' ';
      const std::size_t start = text.size();
      for (std::uint64_t part = 0; part < 2 + below(2); ++part) {
        text += kSyllables[below(kSyllables.size())];
      }
      text[start] = static_cast<char>(text[start] - 'a' + 'A');
    }
    return text;
  }

  std::uint64_t state_ = 7;
  std::uint64_t number_ = 1;
};

}  // namespace velmora::bench
