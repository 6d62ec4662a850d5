#include "platform/visible_text.h"

namespace velmora {
namespace {

// How many of the first bytes are a control character; 0 if the text begins with none.
std::size_t control_bytes(std::string_view text) {
  const auto byte = static_cast<unsigned char>(text.front());
  if (byte < 0x20 || byte == 0x7F) return 1;
  if (byte != 0xC2 || text.size() < 2) return 0;
  const auto second = static_cast<unsigned char>(text[1]);
  return second >= 0x80 && second < 0xA0 ? 2 : 0;
}

}  // namespace

std::string escape_control_bytes(std::string_view text) {
  constexpr char kHex[] = "0123456789ABCDEF";
  std::string line;
  line.reserve(text.size());
  while (!text.empty()) {
    const std::size_t control = control_bytes(text);
    if (control == 0) line += text.front();
    for (const char c : text.substr(0, control)) {
      const auto byte = static_cast<unsigned char>(c);
      line += "\\x";
      line += kHex[byte / 16];
      line += kHex[byte % 16];
    }
    text.remove_prefix(control == 0 ? 1 : control);
  }
  return line;
}

}  // namespace velmora
