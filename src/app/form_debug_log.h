// The debug log: the text of the window frmDebug, to which every error trap writes its line. A line
// can also be echoed elsewhere (a terminal). One call is one line: control bytes are escaped.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "form/control.h"
#include "platform/debug_log.h"

namespace velmora {

class FormDebugLog : public DebugLog {
 public:
  // Kept: a log longer than the first figure is cut to its first characters, so the newest go.
  static constexpr std::size_t kMostCharacters = 5000;
  static constexpr std::size_t kCutTo = 4000;

  explicit FormDebugLog(Window& frmDebug) : window_(frmDebug) {}
  void debug_log(std::string_view text) override;

  // Told every line, escaped, without its line break.
  std::function<void(const std::string& line)> echo;

 private:
  Window& window_;
};

}  // namespace velmora
