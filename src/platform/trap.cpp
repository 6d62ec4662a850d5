#include "platform/trap.h"

#include <new>
#include <stdexcept>

#include "platform/error.h"

namespace velmora {

std::string description_of_current_error() {
  try {
    throw;
  } catch (const PlatformError& error) {
    return error.description();
  } catch (const std::bad_alloc&) {
    return PlatformError(Errc::out_of_memory).description();
  } catch (const std::length_error&) {
    return PlatformError(Errc::out_of_memory).description();
  } catch (const std::out_of_range&) {
    return PlatformError(Errc::subscript_out_of_range).description();
  } catch (const std::exception& error) {
    return error.what();
  }
}

std::string text_of_current_error(std::string_view prefix) noexcept {
  try {
    return std::string(prefix) + description_of_current_error();
  } catch (const std::exception&) {
    return "Out of memory";  // short enough to need none
  }
}

void log_current_error(DebugLog& log, std::string_view prefix) noexcept {
  try {
    log_error(log, prefix, description_of_current_error());
  } catch (const std::exception&) {  // there is nobody left to tell
  }
}

void log_error(DebugLog& log, std::string_view prefix, std::string_view description) noexcept {
  try {
    log.debug_log(std::string(prefix).append(description));
  } catch (const std::exception&) {  // there is nobody left to tell
  }
}

}  // namespace velmora
