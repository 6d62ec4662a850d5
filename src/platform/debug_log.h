// Where every procedure writes its debug lines. One call is one line; the text carries no line
// break of its own. Owned by the program's composition root.
#pragma once

#include <string_view>

namespace velmora {

class DebugLog {
 public:
  virtual ~DebugLog() = default;
  virtual void debug_log(std::string_view text) = 0;
};

}  // namespace velmora
