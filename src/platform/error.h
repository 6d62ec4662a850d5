// The one exception type that the platform raises: every limit of the machine and every failed
// conversion is a PlatformError, so that the trap which reports it says what happened.
// It is a value (code, number, description); it is not a log line and knows no procedure names.
#pragma once

#include <exception>
#include <string>

namespace velmora {

enum class Errc {
  invalid_call,            // 5
  overflow,                // 6
  out_of_memory,           // 7
  subscript_out_of_range,  // 9
  type_mismatch,           // 13
  bad_file_name,           // 52
  file_exists,             // 58
  disk_full,               // 61
  input_past_end,          // 62
  path_not_found,          // 76
  address_in_use,          // 24048
  no_buffer_space,         // 24055
  not_connected,           // 24057
  system,                  // any other failure of the operating system; number 75
};

class PlatformError : public std::exception {
 public:
  explicit PlatformError(Errc code);
  PlatformError(Errc code, std::string description);

  // The error for an errno value, with the system's own description ("No such file or directory").
  static PlatformError from_errno(int error);

  [[nodiscard]] Errc code() const { return code_; }
  [[nodiscard]] int number() const;
  [[nodiscard]] const std::string& description() const { return description_; }
  [[nodiscard]] const char* what() const noexcept override { return description_.c_str(); }

 private:
  Errc code_;
  std::string description_;
};

}  // namespace velmora
