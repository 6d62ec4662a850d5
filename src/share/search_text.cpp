#include "share/search_text.h"

namespace velmora {
namespace {

char upper_case(char letter) {
  return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

std::uint64_t pair_bit(char first, char second) {
  const std::uint32_t pair = static_cast<std::uint32_t>(static_cast<unsigned char>(first)) << 8 |
                             static_cast<unsigned char>(second);
  return std::uint64_t{1} << (pair * 0x9E3779B1U >> 26);
}

}  // namespace

SearchText::SearchText(std::string_view text) : upper_(text) {
  for (char& letter : upper_) letter = upper_case(letter);
  for (std::size_t i = 1; i < upper_.size(); ++i) pairs_ |= pair_bit(upper_[i - 1], upper_[i]);
}

}  // namespace velmora
