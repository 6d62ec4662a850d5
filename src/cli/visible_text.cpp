#include "cli/visible_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <span>

namespace velmora::cli {
namespace {

struct CodePoint {
  char32_t value;
  std::size_t bytes;
  bool valid;  // not valid: one stray byte, its value in `value`
};

// Reads the code point at the start of a text that is not empty; overlong forms, surrogates and
// cut sequences are stray bytes.
CodePoint first_code_point(std::string_view text) {
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return {lead, 1, true};
  const CodePoint stray{lead, 1, false};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return stray;
  char32_t value = lead & (0x7FU >> length);
  for (std::size_t at = 1; at < length; ++at) {
    if ((byte(at) & 0xC0U) != 0x80U) return stray;
    value = (value << 6U) | (byte(at) & 0x3FU);
  }
  constexpr std::array<char32_t, 5> kLeast = {0, 0, 0x80, 0x800, 0x10000};
  if (value < kLeast.at(length) || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
    return stray;
  }
  return {value, length, true};
}

struct Range {
  char32_t first;
  char32_t last;
};

bool is_in(std::span<const Range> ranges, char32_t value) {
  const auto after =
      std::upper_bound(ranges.begin(), ranges.end(), value,
                       [](char32_t v, const Range& range) { return v < range.first; });
  return after != ranges.begin() && value <= std::prev(after)->last;
}

// Control characters, direction changers, and characters that nobody sees but that make two names
// look the same. The joiners U+200C and U+200D stay: scripts and emoji need them.
constexpr Range kUnsafe[] = {
    {0x00, 0x1F},     {0x7F, 0x9F},     {0xAD, 0xAD},     {0x61C, 0x61C},
    {0x180E, 0x180E}, {0x200B, 0x200B}, {0x200E, 0x200F}, {0x2028, 0x202E},
    {0x2060, 0x206F}, {0xFEFF, 0xFEFF}, {0xFFF0, 0xFFFB}, {0xE0000, 0xE007F},
};

constexpr Range kCombining[] = {
    {0x300, 0x36F},   {0x483, 0x489},   {0x591, 0x5BD},     {0x5BF, 0x5BF},   {0x5C1, 0x5C2},
    {0x5C4, 0x5C5},   {0x610, 0x61A},   {0x64B, 0x65F},     {0x670, 0x670},   {0x6D6, 0x6DC},
    {0x6DF, 0x6E4},   {0x6E7, 0x6E8},   {0x6EA, 0x6ED},     {0x93C, 0x93C},   {0x941, 0x948},
    {0x94D, 0x94D},   {0xE31, 0xE31},   {0xE34, 0xE3A},     {0xE47, 0xE4E},   {0x1AB0, 0x1AFF},
    {0x1DC0, 0x1DFF}, {0x200B, 0x200F}, {0x20D0, 0x20FF},   {0x302A, 0x302D}, {0x3099, 0x309A},
    {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xE0100, 0xE01EF},
};

constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x23E9, 0x23EC},   {0x25FD, 0x25FE},
    {0x2614, 0x2615},   {0x2648, 0x2653},   {0x26AA, 0x26AB},   {0x26BD, 0x26BE},
    {0x2705, 0x2705},   {0x2728, 0x2728},   {0x2753, 0x2755},   {0x2795, 0x2797},
    {0x2B1B, 0x2B1C},   {0x2B50, 0x2B50},   {0x2E80, 0x303E},   {0x3041, 0x33FF},
    {0x3400, 0x4DBF},   {0x4E00, 0xA4CF},   {0xA960, 0xA97F},   {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},
    {0x1F18E, 0x1F18E}, {0x1F191, 0x1F19A}, {0x1F1E6, 0x1F202}, {0x1F300, 0x1F64F},
    {0x1F680, 0x1F6FF}, {0x1F7E0, 0x1F7EB}, {0x1F900, 0x1F9FF}, {0x1FA70, 0x1FAFF},
    {0x20000, 0x3FFFD},
};

std::size_t width_of(char32_t value) {
  if (value < 0x300) return 1;
  if (is_in(kCombining, value)) return 0;
  return is_in(kWide, value) ? 2 : 1;
}

std::string made_visible(std::string_view text, bool keep_lines) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const CodePoint point = first_code_point(text);
    const auto number = static_cast<unsigned>(point.value);
    if (keep_lines && text.starts_with("\r\n")) {
      // the line feed that follows ends the line
    } else if (keep_lines && (point.value == U'\n' || point.value == U'\t')) {
      out += text.front();
    } else if (!point.valid || (number < 0x100 && is_in(kUnsafe, point.value))) {
      out += fmt::format("\\x{:02X}", number);
    } else if (is_in(kUnsafe, point.value)) {
      out += fmt::format("\\u{:04X}", number);
    } else {
      out += text.substr(0, point.bytes);
    }
    text.remove_prefix(point.bytes);
  }
  return out;
}

}  // namespace

std::string visible(std::string_view text) { return made_visible(text, false); }
std::string visible_lines(std::string_view text) { return made_visible(text, true); }

std::size_t columns(std::string_view text) {
  std::size_t sum = 0;
  while (!text.empty()) {
    const CodePoint point = first_code_point(text);
    sum += width_of(point.value);
    text.remove_prefix(point.bytes);
  }
  return sum;
}

std::string cut_to(std::string_view text, std::size_t width) {
  if (columns(text) <= width) return std::string(text);
  if (width == 0) return {};
  std::size_t used = 0;
  std::size_t bytes = 0;
  while (bytes < text.size()) {
    const CodePoint point = first_code_point(text.substr(bytes));
    if (used + width_of(point.value) > width - 1) break;
    used += width_of(point.value);
    bytes += point.bytes;
  }
  return std::string(text.substr(0, bytes)) + "…";
}

std::string padded(std::string_view text, std::size_t width, bool to_the_right) {
  const std::size_t used = columns(text);
  const std::string blanks(used < width ? width - used : 0, ' ');
  return to_the_right ? blanks + std::string(text) : std::string(text) + blanks;
}

std::string to_wire(std::string_view bytes) {
  bool utf8 = true;
  for (std::string_view rest = bytes; !rest.empty() && utf8;) {
    const CodePoint point = first_code_point(rest);
    utf8 = point.valid;
    rest.remove_prefix(point.bytes);
  }
  if (utf8) return std::string(bytes);
  std::string out;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      out += c;
    } else {
      out += static_cast<char>(0xC0U | (byte >> 6U));
      out += static_cast<char>(0x80U | (byte & 0x3FU));
    }
  }
  return out;
}

}  // namespace velmora::cli
