#include "app/form_debug_log.h"

#include "platform/visible_text.h"

namespace velmora {

void FormDebugLog::debug_log(std::string_view text) {
  // More of one line would be cut at once.
  const std::string line = escape_control_bytes(text.substr(0, kMostCharacters));
  const std::string ended = line + "\r\n";
  if (window_.text().size() + ended.size() <= kMostCharacters) {
    window_.append_text(ended);
  } else {
    window_.set_text((window_.text() + ended).substr(0, kCutTo));
  }
  if (echo) echo(line);
}

}  // namespace velmora
