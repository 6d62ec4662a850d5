#include "protocol/conversions.h"

#include <charconv>

#include "platform/error.h"
#include "platform/number.h"
#include "platform/trap.h"
#include "protocol/descriptor_header.h"

namespace velmora {
namespace {

// The code of a character that may not be there.
unsigned char byte_at(std::string_view bytes, std::size_t index) {
  if (index >= bytes.size()) throw PlatformError(Errc::invalid_call);
  return static_cast<unsigned char>(bytes[index]);
}

char as_char(unsigned value) { return static_cast<char>(static_cast<unsigned char>(value & 255U)); }

}  // namespace

std::string Dword_to_Str(double value) {
  // Single precision, as the records hold it.
  float rest = to_single(value);
  constexpr float kExactBelow = 16'777'216;
  if (rest >= 0 && rest < kExactBelow) {
    const auto whole = static_cast<std::uint32_t>(rest);
    if (static_cast<float>(whole) == rest) {  // whole numbers lose nothing on the way below
      return {as_char(whole), as_char(whole >> 8U), as_char(whole >> 16U), '\0'};
    }
  }
  std::string bytes;
  for (int i = 0; i < 4; ++i) {
    const auto byte = static_cast<std::uint32_t>(to_int32(rest)) & 255U;
    bytes += as_char(byte);
    rest = (rest - static_cast<float>(byte)) / 256;
  }
  return bytes;
}

double Str_to_Dword(std::string_view bytes, DebugLog& log) {
  double value = 0;
  trap(log, "Str_to_Dword: ", [&] {
    value = byte_at(bytes, 3) * 16777216.0 + byte_at(bytes, 2) * 65536.0 +
            byte_at(bytes, 1) * 256.0 + byte_at(bytes, 0);
  });
  return value;
}

std::string Word_to_Str(std::int16_t value) {
  const auto bits = static_cast<std::uint16_t>(value);
  return {as_char(bits), as_char(static_cast<unsigned>(bits) >> 8U)};
}

std::int16_t Str_to_Word(std::string_view bytes, const Behaviour& behaviour) {
  if (behaviour.any_port) return to_port(byte_at(bytes, 1) * 256.0 + byte_at(bytes, 0));
  // Kept: the product is a signed 16-bit number, so ports of 32768 and more cannot be decoded.
  return to_int16(to_int16(byte_at(bytes, 1) * 256.0) + byte_at(bytes, 0));
}

std::string IPdots_to_DwordStr(std::string_view dotted, DebugLog& log) {
  std::string bytes;
  const bool good = trap(log, "Error: IPdots_to_DwordStr: ", [&] {
    for (int i = 0; i < 3; ++i) {
      const std::size_t dot = dotted.find('.');
      if (dot == std::string_view::npos) throw PlatformError(Errc::invalid_call);
      bytes += as_char(to_byte(val(dotted.substr(0, dot))));
      dotted.remove_prefix(dot + 1);
    }
    bytes += as_char(to_byte(val(dotted)));
  });
  return good ? bytes : "-1";
}

std::string dotted_address(std::string_view four_bytes) {
  std::string text;
  for (std::size_t i = 0; i < 4; ++i) {
    if (i > 0) text += '.';
    text += std::to_string(byte_at(four_bytes, i));
  }
  return text;
}

CheckedHost Check_IP(std::string_view host_text) {
  CheckedHost host;
  const std::size_t colon = host_text.find(':');
  host.port = 6346;
  std::string_view rest = host_text.substr(0, colon);
  host.address = rest;
  if (colon != std::string_view::npos)
    host.port = to_port(typed_number(host_text.substr(colon + 1)));
  for (int i = 0; i < 4; ++i) {
    const std::size_t dot = i < 3 ? rest.find('.') : rest.size();
    if (dot == std::string_view::npos) {
      host.message = "Not a valid IP!, need 3 dots";
      return host;
    }
    if (typed_number(rest.substr(0, dot)) > 255) {
      host.message = "Not a valid IP!, > 255";
      return host;
    }
    if (i < 3) rest.remove_prefix(dot + 1);
  }
  return host;
}

std::string GetGUID(const LocalTime& now) {
  // Kept: without the minute, so that identifiers repeat.
  return (std::to_string(now.hour) + std::to_string(now.second) + "1234567890123456")
      .substr(0, kGuidSize);
}

std::string guid_text(std::string_view guid) {
  constexpr char kHex[] = "0123456789ABCDEF";
  std::string text;
  for (const char c : guid) {
    const auto byte = static_cast<unsigned char>(c);
    if (!text.empty()) text += '-';
    text += kHex[byte / 16];
    text += kHex[byte % 16];
  }
  return text;
}

std::string text_to_guid(std::string_view text) {
  text = text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
  if (text.size() != 3 * kGuidSize - 1) return {};
  std::string guid;
  for (std::size_t at = 0; at < text.size(); at += 3) {
    unsigned byte = 0;
    const char* const end = text.data() + at + 2;
    if (std::from_chars(text.data() + at, end, byte, 16).ptr != end) return {};
    if (end != text.data() + text.size() && *end != '-') return {};
    guid += as_char(byte);
  }
  return guid;
}

}  // namespace velmora
