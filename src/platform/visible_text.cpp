#include "platform/visible_text.h"

namespace velmora {

std::string escape_control_bytes(std::string_view text) {
  constexpr char kHex[] = "0123456789ABCDEF";
  std::string line;
  line.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 32 || byte == 127) {
      line += "\\x";
      line += kHex[byte / 16];
      line += kHex[byte % 16];
    } else {
      line += c;
    }
  }
  return line;
}

}  // namespace velmora
