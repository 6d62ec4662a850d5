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
// With a prefix before it; without one when there is no memory for that.
std::string text_of_current_error(std::string_view prefix) noexcept;

// Writes the line of the error being handled. One that finds no memory for itself is not written:
// an error must not end the program because it cannot be told.
void log_current_error(DebugLog& log, std::string_view prefix) noexcept;
void log_error(DebugLog& log, std::string_view prefix, std::string_view description) noexcept;

// Runs the body. Returns "" on success, else the prefix followed by the error's description.
template <class Body>
std::string trapped(std::string_view prefix, Body&& body) {
  try {
    std::forward<Body>(body)();
    return {};
  } catch (const std::exception&) {
    return text_of_current_error(prefix);
  }
}

// The same, writing the text as one debug line. Returns true on success.
template <class Body>
bool trap(DebugLog& log, std::string_view prefix, Body&& body) {
  try {
    std::forward<Body>(body)();
    return true;
  } catch (const std::exception&) {
    log_current_error(log, prefix);
    return false;
  }
}

}  // namespace velmora
