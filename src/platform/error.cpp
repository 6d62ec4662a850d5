#include "platform/error.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace velmora {
namespace {

struct Row {
  Errc code;
  int number;
  const char* description;
};

constexpr Row kRows[] = {
    {Errc::invalid_call, 5, "Invalid procedure call or argument"},
    {Errc::overflow, 6, "Overflow"},
    {Errc::out_of_memory, 7, "Out of memory"},
    {Errc::subscript_out_of_range, 9, "Subscript out of range"},
    {Errc::type_mismatch, 13, "Type mismatch"},
    {Errc::bad_file_name, 52, "Bad file name"},
    {Errc::file_exists, 58, "File exists"},
    {Errc::disk_full, 61, "No space left on device"},
    {Errc::input_past_end, 62, "Input past end of file"},
    {Errc::path_not_found, 76, "No such file or directory"},
    {Errc::address_in_use, 24048, "Address already in use"},
    {Errc::no_buffer_space, 24055, "No buffer space available"},
    {Errc::not_connected, 24057, "Not connected"},
    {Errc::system, 75, "System error"},
};

const Row& row_of(Errc code) {
  for (const Row& row : kRows) {
    if (row.code == code) return row;
  }
  return kRows[std::size(kRows) - 1];
}

Errc code_of_errno(int error) {
  switch (error) {
    case ENOMEM:
      return Errc::out_of_memory;
    case EEXIST:
      return Errc::file_exists;
    case ENOSPC:
      return Errc::disk_full;
    case ENOENT:
      return Errc::path_not_found;
    case EADDRINUSE:
      return Errc::address_in_use;
    case ENOBUFS:
      return Errc::no_buffer_space;
    case ENOTCONN:
      return Errc::not_connected;
    default:
      return Errc::system;
  }
}

}  // namespace

PlatformError::PlatformError(Errc code) : PlatformError(code, row_of(code).description) {}

PlatformError::PlatformError(Errc code, std::string description)
    : code_(code), description_(std::move(description)) {}

PlatformError PlatformError::from_errno(int error) {
  const Errc code = code_of_errno(error);
  if (code != Errc::system) return PlatformError(code);
  return {code, std::strerror(error)};
}

int PlatformError::number() const { return row_of(code_).number; }

}  // namespace velmora
