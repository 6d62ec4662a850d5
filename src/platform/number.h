// The number library: every conversion between widths, and between text and numbers, as a total
// function. A value that does not fit raises the platform's "Overflow", text that is no number its
// "Type mismatch"; no other code narrows a number. Rounding is half to even.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velmora {

std::uint8_t to_byte(double value);   // 0 to 255
std::int16_t to_int16(double value);  // signed 16 bits
std::int32_t to_int32(double value);  // signed 32 bits
float to_single(double value);        // overflow beyond the range of single precision

// A port is held in 16 bits, two's complement: it wraps and never overflows. NaN and infinity are
// 0.
std::int16_t to_port(double value);
std::uint16_t unsigned_port(std::int16_t port);  // as it is shown and as sockets take it

// Lenient reading: blanks are skipped, then the longest number at the start counts; 0 if none.
double val(std::string_view text);

// The same for what a person typed: a number beyond every range is infinite, not an error.
double typed_number(std::string_view text);

// Strict reading: surrounding blanks and thousands separators are accepted, anything else that is
// no number (the empty text too) raises "Type mismatch".
double number(std::string_view text);

// Plain decimal text of a number rounded to a whole one: no exponent, no separators.
std::string decimal_text(double value);

// The picture "###,###,###": whole number with thousands separators, a zero or empty text gives
// the empty text, text that is no number is returned as it stands.
std::string thousands(std::string_view text);
std::string thousands(double value);

}  // namespace velmora
