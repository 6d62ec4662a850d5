#include "transfer/parse_filename.h"

#include <cstddef>

#include "platform/error.h"
#include "platform/trap.h"

namespace velmora {
namespace {

// Positions count from 1; 0 stands for "none".
std::size_t position_of(std::string_view text, char what, std::size_t after = 0) {
  const std::size_t found = text.find(what, after);
  return found == std::string_view::npos ? 0 : found + 1;
}

// The characters from one position up to, not including, another; an end before the start is an
// invalid call.
std::string characters(std::string_view text, std::size_t from, std::size_t end) {
  if (end < from) throw PlatformError(Errc::invalid_call);
  return from > text.size() ? std::string() : std::string(text.substr(from - 1, end - from));
}

// Kept: a name whose only "." is its first character matches no case and leaves everything empty.
void split(std::string_view text, ParsedName& parsed) {
  const std::size_t last_dot = text.rfind('.');
  const std::size_t d = last_dot == std::string_view::npos ? 0 : last_dot + 1;
  const std::size_t first_zero = position_of(text, '\0');
  const std::size_t z = first_zero == 0 ? text.size() + 1 : first_zero;
  const std::size_t c1 = position_of(text, '\1');

  if (d >= 2 && c1 == 0) {
    parsed.name = characters(text, 1, d);
    parsed.extension = characters(text, d + 1, z);
  } else if (d == 0) {
    parsed.name = std::string(text);
  } else if (c1 >= 2 && d >= 2) {
    parsed.name = characters(text, 1, d);
    parsed.extension = characters(text, d + 1, c1);
    const std::size_t c2 = position_of(text, '\1', c1);
    parsed.frequency = characters(text, c1 + 1, c2);
    parsed.bitrate = characters(text, c2 + 1, z);
  }
}

}  // namespace

ParsedName parse_filename(std::string_view text, DebugLog& log) {
  ParsedName parsed;
  trap(log, "parse_filename: ", [&] { split(text, parsed); });
  return parsed;
}

}  // namespace velmora
