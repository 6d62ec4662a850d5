// Splits the name in a query hit's entry into name, extension and the audio information that
// servents append to it (name, character 1, frequency, character 1, bit rate).
#pragma once

#include <string>
#include <string_view>

#include "platform/debug_log.h"

namespace velmora {

struct ParsedName {
  std::string name;
  std::string extension;
  std::string frequency;
  std::string bitrate;
};

// Traps its errors with "parse_filename: "; what was split off before one is kept.
ParsedName parse_filename(std::string_view text, DebugLog& log);

}  // namespace velmora
