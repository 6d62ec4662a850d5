// What is known of one upload connection: the row of the upload list. The record outlives its
// connection, with the last status, until its slot is used again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/files.h"

namespace velmora {

// Connections at a time; further ones are closed at once.
inline constexpr std::size_t kMaxUploadSlots = 1000;

enum class UploadState : std::int16_t { none = 0, sending = 1, resume_pending = 2 };

struct UploadSlot {
  std::int16_t file_number = 0;
  std::string file_name;  // as requested
  std::string address;    // of the client, dotted
  std::string host_name;  // shorter than 3 characters while unknown
  std::int32_t range_start = 0;
  std::int32_t file_size = 0;
  std::string status;
  UploadState state = UploadState::none;
  std::unique_ptr<File> file;  // while it is open

  std::string user_agent;
  std::string path;           // of the file on disk, fixed when the request was accepted
  std::int32_t position = 0;  // of the next byte to send, from 0
  std::int32_t end = 0;       // where sending ends, from 0; a whole file's size
  bool common_form = false;   // asked and answered as HTTP/1.x
  int failures = 0;           // ticks in a row that ended in an error
};

}  // namespace velmora
