#include "platform/http_text.h"

#include <algorithm>
#include <charconv>

namespace velmora {
namespace {

constexpr auto kNone = std::string_view::npos;

std::string_view without_blanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == kNone) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

char small(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

std::string_view first_line(std::string_view text) {
  std::string_view line = text.substr(0, text.find('\n'));
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

std::size_t http_header_length(std::string_view text) {
  for (std::size_t end = text.find('\n'); end != kNone; end = text.find('\n', end + 1)) {
    const std::string_view rest = text.substr(end + 1);
    if (rest.starts_with("\r\n")) return end + 3;
    if (rest.starts_with('\n')) return end + 2;
  }
  return 0;
}

std::optional<std::string_view> http_field(std::string_view header, std::string_view name) {
  for (std::size_t end = header.find('\n'); end != kNone; end = header.find('\n')) {
    header.remove_prefix(end + 1);
    const std::string_view line = first_line(header);
    const std::size_t colon = line.find(':');
    if (colon != kNone && same_letters(line.substr(0, colon), name)) {
      return without_blanks(line.substr(colon + 1));
    }
  }
  return std::nullopt;
}

std::optional<std::uint64_t> http_number(std::string_view text) {
  constexpr std::uint64_t kBeyond = std::uint64_t{1} << 62;
  if (text.empty() || text.find_first_not_of("0123456789") != kNone) return std::nullopt;
  std::uint64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() ? std::min(value, kBeyond) : kBeyond;
}

bool same_letters(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return small(a) == small(b); });
}

std::optional<std::string> without_escapes(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      bytes += text[i];
      continue;
    }
    const std::string_view hex = text.substr(i + 1, 2);
    unsigned value = 0;
    const auto result = std::from_chars(hex.data(), hex.data() + hex.size(), value, 16);
    if (hex.size() != 2 || result.ptr != hex.data() + 2) return std::nullopt;
    bytes += static_cast<char>(value);
    i += 2;
  }
  return bytes;
}

std::string with_escapes(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
  std::string escaped;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (kPlain.find(c) != kNone) {
      escaped += c;
    } else {
      escaped += {'%', kDigits[byte >> 4U], kDigits[byte & 15U]};
    }
  }
  return escaped;
}

}  // namespace velmora
