// The one helper with which a procedure traps its own errors: a prefix (the procedure's name as the
// user reads it) and a body. It is not a place to repair anything: state stays as the error left
// it.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "platform/debug_log.h"

namespace velmora {

// The description of the exception being handled; call only inside a catch block.
std::string description_of_current_error();

// Runs the body. Returns "" on success, else the prefix followed by the error's description.
template <class Body>
std::string trapped(std::string_view prefix, Body&& body) {
  try {
    std::forward<Body>(body)();
    return {};
  } catch (const std::exception&) {
    return std::string(prefix) + description_of_current_error();
  }
}

// The same, writing the text as one debug line. Returns true on success.
template <class Body>
bool trap(DebugLog& log, std::string_view prefix, Body&& body) {
  const std::string text = trapped(prefix, std::forward<Body>(body));
  if (!text.empty()) log.debug_log(text);
  return text.empty();
}

}  // namespace velmora
