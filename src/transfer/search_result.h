// One file entry of a received query hit, as the user sees and queues it. It is plain data, copied
// field for field into the download list. Numbers that are only shown or sent are decimal texts.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace velmora {

struct search_result {
  std::int32_t file_index = 0;  // of the answering servent
  std::int16_t search = 0;      // which of the user's searches it answers, 1 to 3; 0: not known
  std::string name;             // up to, not including, its last "."
  std::string extension;
  std::string size;     // bytes
  std::string address;  // dotted
  std::string port;
  std::string host_name;  // shorter than 3 characters while it is not known
  std::string speed;      // kbit/s as the other side tells it
  std::array<char, 16> servent_guid{};
  std::string frequency;  // Hz, or empty
  std::string bitrate;    // bit/s, or empty
};

}  // namespace velmora
