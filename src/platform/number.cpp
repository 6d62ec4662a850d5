#include "platform/number.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>

#include "platform/error.h"

namespace velmora {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_exponent_mark(char c) { return c == 'e' || c == 'E' || c == 'd' || c == 'D'; }

template <class Whole>
Whole to_whole(double value) {
  // Most are whole already, and rounding costs a call.
  if (value >= std::numeric_limits<Whole>::min() && value <= std::numeric_limits<Whole>::max()) {
    const auto whole = static_cast<Whole>(value);
    if (whole == value) return whole;
  }
  const double rounded = std::nearbyint(value);
  // Negated, so that NaN fails the test too.
  if (!(rounded >= std::numeric_limits<Whole>::min() &&
        rounded <= std::numeric_limits<Whole>::max())) {
    throw PlatformError(Errc::overflow);
  }
  return static_cast<Whole>(rounded);
}

// Whether a number that is beyond the range of double is too small for it rather than too large.
bool is_tiny(std::string_view plain) {
  const std::size_t mark = plain.find('e');
  const std::string_view digits = plain.substr(0, mark);
  const std::size_t first = digits.find_first_of("123456789");
  if (first == std::string_view::npos) return true;
  int exponent = 0;
  if (mark != std::string_view::npos) {
    std::string_view text = plain.substr(mark + 1);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    const auto read = std::from_chars(text.data(), text.data() + text.size(), exponent);
    if (read.ec == std::errc::result_out_of_range) return negative;
    if (negative) exponent = -exponent;
  }
  const double point = static_cast<double>(std::min(digits.find('.'), digits.size()));
  return point - static_cast<double>(first) + exponent < 0;
}

struct Reading {
  double value = 0;
  std::size_t used = 0;  // characters; 0 if the text does not begin with a number
};

// The longest number at the start of a text that holds only digits, signs, points and "e".
Reading read_plain(std::string_view text) {
  const bool plus = text.starts_with('+');
  if (plus) text.remove_prefix(1);
  if (plus && text.starts_with('-')) return {};
  Reading reading;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), reading.value);
  if (read.ec == std::errc::invalid_argument) return {};
  const auto used = static_cast<std::size_t>(read.ptr - text.data());
  if (read.ec == std::errc::result_out_of_range || std::isinf(reading.value)) {
    if (!is_tiny(text.substr(0, used))) throw PlatformError(Errc::overflow);
    reading.value = 0;
  }
  reading.used = used + (plus ? 1 : 0);
  return reading;
}

// Nearly every number is a short run of digits.
std::optional<double> short_whole_number(std::string_view text) {
  constexpr std::size_t kMostDigits = 15;
  if (text.empty() || text.size() > kMostDigits ||
      !std::all_of(text.begin(), text.end(), is_digit)) {
    return std::nullopt;
  }
  std::int64_t value = 0;
  for (const char c : text) value = value * 10 + (c - '0');
  return static_cast<double>(value);
}

std::string_view without_surrounding_blanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

}  // namespace

std::uint8_t to_byte(double value) { return to_whole<std::uint8_t>(value); }
std::int16_t to_int16(double value) { return to_whole<std::int16_t>(value); }
std::int32_t to_int32(double value) { return to_whole<std::int32_t>(value); }

float to_single(double value) {
  if (!(std::abs(value) <= std::numeric_limits<float>::max())) {
    throw PlatformError(Errc::overflow);
  }
  return static_cast<float>(value);
}

std::int16_t to_port(double value) {
  constexpr double kPorts = 65536;
  if (!std::isfinite(value)) return 0;
  const double wrapped = std::fmod(std::nearbyint(value), kPorts);
  return static_cast<std::int16_t>(static_cast<std::int32_t>(wrapped));
}

std::uint16_t unsigned_port(std::int16_t port) { return static_cast<std::uint16_t>(port); }

double val(std::string_view text) {
  std::string plain;
  for (const char c : text) {
    if (c == ' ' || c == '\t' || c == '\n') continue;
    const bool mark = is_exponent_mark(c);
    if (!is_digit(c) && !mark && c != '+' && c != '-' && c != '.') break;
    plain += mark ? 'e' : c;
  }
  return read_plain(plain).value;
}

double typed_number(std::string_view text) {
  try {
    return val(text);
  } catch (const PlatformError&) {
    return std::numeric_limits<double>::infinity();
  }
}

double number(std::string_view text) {
  if (const auto value = short_whole_number(text)) return *value;
  text = without_surrounding_blanks(text);
  std::string plain;
  bool in_whole_part = true;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == ',' && in_whole_part && i > 0 && is_digit(text[i - 1]) && i + 1 < text.size() &&
        is_digit(text[i + 1])) {
      continue;
    }
    const bool mark = is_exponent_mark(c);
    if (!is_digit(c) && !mark && c != '+' && c != '-' && c != '.') {
      throw PlatformError(Errc::type_mismatch);
    }
    if (mark || c == '.') in_whole_part = false;
    plain += mark ? 'e' : c;
  }
  const Reading reading = read_plain(plain);
  if (reading.used == 0 || reading.used != plain.size()) throw PlatformError(Errc::type_mismatch);
  return reading.value;
}

std::string decimal_text(double value) {
  if (!std::isfinite(value)) throw PlatformError(Errc::overflow);
  constexpr double kExact = 9007199254740992;  // up to here every whole number is an integer, too
  if (std::abs(value) < kExact) {
    return std::to_string(static_cast<std::int64_t>(std::nearbyint(value)));
  }
  return fmt::format("{:.0f}", value);
}

std::string thousands(std::string_view text) {
  if (text.empty()) return {};
  double value = 0;
  try {
    value = number(text);
  } catch (const PlatformError&) {
    return std::string(text);
  }
  return thousands(value);
}

std::string thousands(double value) {
  std::string text = decimal_text(value);
  if (text == "0") return {};
  const std::size_t first_digit = text.starts_with('-') ? 1 : 0;
  for (std::size_t at = text.size(); at > first_digit + 3;) {
    at -= 3;
    text.insert(at, 1, ',');
  }
  return text;
}

}  // namespace velmora
