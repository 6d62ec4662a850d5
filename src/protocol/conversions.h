// Bytes on the wire <-> numbers, addresses and identifiers. Multi-byte numbers are little-endian;
// an address is four bytes in dotted order. Procedures that trap their own errors take the log;
// the others raise a PlatformError.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/behaviour.h"
#include "platform/debug_log.h"
#include "platform/event_loop.h"

namespace velmora {

// 4 bytes. The value rounds to a whole number; one of 2^31 or more (or below -2^31) overflows.
std::string Dword_to_Str(double value);
// At least 4 bytes; fewer write a line "Str_to_Dword: " and give 0.
double Str_to_Dword(std::string_view bytes, DebugLog& log);
std::string Word_to_Str(std::int16_t value);
// A port. At least 2 bytes, else "Invalid procedure call or argument". Kept: values of 32768 and
// more overflow, unless any port is understood; then they are negative (two's complement).
std::int16_t Str_to_Word(std::string_view bytes, const Behaviour& behaviour = kClassic);

// Four bytes, or "-1" and a line "Error: IPdots_to_DwordStr: " for fewer than three dots.
std::string IPdots_to_DwordStr(std::string_view dotted, DebugLog& log);
// Decimal text of four bytes; fewer raise "Invalid procedure call or argument".
std::string dotted_address(std::string_view four_bytes);

struct CheckedHost {
  std::string message;  // empty when the text is valid
  std::string address;
  std::int16_t port = 0;
};
CheckedHost Check_IP(std::string_view host_text);

// 16 characters. Kept: made of the hour and the second only, so that it repeats.
std::string GetGUID(const LocalTime& now);

// Upper-case hexadecimal byte values joined with "-".
std::string guid_text(std::string_view guid);
// The 16 bytes that such a text stands for, in capitals or not, blanks behind it aside; empty for
// every other text.
std::string text_to_guid(std::string_view text);

}  // namespace velmora
