#include "platform/utf8.h"

namespace velmora {
namespace {

unsigned char byte_at(std::string_view text, std::size_t index) {
  return static_cast<unsigned char>(text[index]);
}

}  // namespace

std::size_t utf8_character(std::string_view text) {
  if (text.empty()) return 0;
  const unsigned char lead = byte_at(text, 0);
  if (lead < 0x80) return 1;
  const std::size_t length = lead < 0xC2   ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  if (length == 0 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte_at(text, i) & 0xC0U) != 0x80U) return 0;
  }
  const unsigned char second = byte_at(text, 1);
  if (lead == 0xE0 && second < 0xA0) return 0;   // longer than needed
  if (lead == 0xED && second >= 0xA0) return 0;  // a surrogate
  if (lead == 0xF0 && second < 0x90) return 0;   // longer than needed
  if (lead == 0xF4 && second >= 0x90) return 0;  // above U+10FFFF
  return length;
}

bool is_utf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = utf8_character(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::string as_utf8(std::string_view bytes) {
  if (is_utf8(bytes)) return std::string(bytes);
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      text += c;
    } else {
      text += static_cast<char>(0xC0U | (byte >> 6U));
      text += static_cast<char>(0x80U | (byte & 0x3FU));
    }
  }
  return text;
}

}  // namespace velmora
