#include "app/form_debug_log.h"

#include <utility>

#include "platform/visible_text.h"

namespace velmora {

void FormDebugLog::debug_log(std::string_view text) {
  // More of one line would be cut at once.
  const std::string line = escape_control_bytes(text.substr(0, kMostCharacters));
  std::string log = window_.text() + line + "\r\n";
  if (log.size() > kMostCharacters) log.resize(kCutTo);
  window_.set_text(std::move(log));
  if (echo) echo(line);
}

}  // namespace velmora
