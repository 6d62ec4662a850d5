// One file that this servent offers, as the scan recorded it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velmora {

struct SharedFile {
  std::string name;       // for MPEG audio: name, byte 1, frequency, byte 1, bit rate
  std::int32_t size = 0;  // bytes when it was scanned
  // The folder it lies in: a shared directory as the user typed it, without its last separator, or
  // a folder below that.
  std::string path;
  std::int16_t uploads = 0;  // how often it was uploaded to its end
};

// The most that file numbers of 16 bits can name.
inline constexpr std::size_t kMaxSharedFiles = 32767;

// Where the file lies: the directory and the name without its audio information.
std::string path_on_disk(const SharedFile& file);

// Whether a downloader's name means the file: the stored name whole or without its audio
// information; a name without a dot may have one behind it, as this program's own downloads ask.
bool names_file(const SharedFile& file, std::string_view requested_name);

}  // namespace velmora
