// What the engine's classes ask for and a benchmark has no use for.
#pragma once

#include <string>
#include <string_view>

#include "platform/debug_log.h"

namespace velmora::bench {

// A line means that something failed; a benchmark that writes one says so.
class CountingLog : public DebugLog {
 public:
  void debug_log(std::string_view text) override {
    ++lines;
    last = text;
  }
  int lines = 0;
  std::string last;
};

}  // namespace velmora::bench
