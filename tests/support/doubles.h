// What tests of single classes need around those: a log that keeps its lines, the error that a call
// raised, and byte strings written as numbers. Nothing here knows the class under test.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/debug_log.h"
#include "platform/error.h"

namespace velmora {

struct Lines : DebugLog {
  void debug_log(std::string_view text) override { lines.emplace_back(text); }
  std::vector<std::string> lines;
};

// The description of the error that the call raised, or "none".
inline std::string error_of(const std::function<void()>& call) {
  try {
    call();
  } catch (const PlatformError& error) {
    return error.description();
  }
  return "none";
}

// The code of the error that the call has to raise.
inline Errc code_of(const std::function<void()>& call) {
  try {
    call();
  } catch (const PlatformError& error) {
    return error.code();
  }
  ADD_FAILURE() << "no error was raised";
  return Errc::system;
}

inline std::string bytes(std::initializer_list<int> values) {
  std::string text;
  for (const int value : values) text += static_cast<char>(value);
  return text;
}

}  // namespace velmora
