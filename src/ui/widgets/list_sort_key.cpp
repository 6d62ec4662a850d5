#include "ui/widgets/list_sort_key.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "ui/widgets/text.h"

namespace velmora::ui {
namespace {

constexpr char kNumbers = '\x01';
constexpr char kText = '\x02';
constexpr std::size_t kLongestText = 256;  // what differs further on is kept in the list's order

bool is_digit(char c) { return c >= '0' && c <= '9'; }

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

// The comma at `at` has a digit before it and exactly three behind it.
bool separates_thousands(std::string_view text, std::size_t at) {
  if (at == 0 || !is_digit(text[at - 1]) || at + 3 >= text.size()) return false;
  return std::all_of(text.begin() + static_cast<std::ptrdiff_t>(at) + 1,
                     text.begin() + static_cast<std::ptrdiff_t>(at) + 4, is_digit) &&
         (at + 4 == text.size() || !is_digit(text[at + 4]));
}

std::optional<double> number(std::string_view text) {
  std::string digits;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == ',' && separates_thousands(text, at)) continue;
    if (!is_digit(text[at]) && text[at] != '.' && text[at] != '-') return std::nullopt;
    digits += text[at];
  }
  double value = 0;
  const char* end = digits.data() + digits.size();
  const auto [rest, error] = std::from_chars(digits.data(), end, value, std::chars_format::fixed);
  if (error != std::errc() || rest != end) return std::nullopt;
  return value;
}

// Eight bytes whose order is the numbers' own.
void append_number(std::string& key, double value) {
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
  auto bits = std::bit_cast<std::uint64_t>(value + 0.0);  // + 0.0: the negative zero is a zero
  bits = (bits & kSign) != 0 ? ~bits : bits | kSign;
  for (int shift = 56; shift >= 0; shift -= 8) key += static_cast<char>((bits >> shift) & 0xFF);
}

// One number, or several with slashes between them; "" where there is anything else.
std::string key_of_numbers(std::string_view text) {
  std::string key(1, kNumbers);
  for (std::size_t from = 0; from <= text.size();) {
    const std::size_t to = std::min(text.find('/', from), text.size());
    const std::optional<double> value = number(trimmed(text.substr(from, to - from)));
    if (!value) return {};
    append_number(key, *value);
    from = to + 1;
  }
  return key;
}

std::string without_case(std::string_view text) {
  const bool ascii = std::all_of(text.begin(), text.end(),
                                 [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  if (!ascii) return shown(text).toCaseFolded().toStdString();
  std::string folded(text);
  for (char& c : folded) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return folded;
}

// A run of digits is led by its length, so that the longer number is the greater one.
std::string key_of_text(std::string_view text) {
  const std::string folded = without_case(text.substr(0, kLongestText));
  std::string key(1, kText);
  for (std::size_t at = 0; at < folded.size();) {
    if (!is_digit(folded[at])) {
      key += folded[at++];
      continue;
    }
    const std::size_t end = std::min(folded.find_first_not_of("0123456789", at), folded.size());
    const std::size_t first = std::min(folded.find_first_not_of('0', at), end);
    key += '0';
    key += static_cast<char>(std::min<std::size_t>(end - first, 0xFF));
    key.append(folded, first, end - first);
    at = end;
  }
  return key;
}

}  // namespace

std::string sort_key(std::string_view cell) {
  const std::string_view text = trimmed(cell);
  if (text.empty()) return {};
  // Most cells begin with a letter, which no number does.
  const bool maybe_numbers = is_digit(text.front()) || text.front() == '-';
  std::string key = maybe_numbers ? key_of_numbers(text) : std::string();
  return key.empty() ? key_of_text(text) : key;
}

}  // namespace velmora::ui
