// From a name that a stranger chose to the one clean directory entry under which its file may lie
// in the download directory. Only the name on disk is cleaned: requests and lists keep the bytes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velmora {

// A file that is still being fetched has this behind its name.
inline constexpr std::string_view kPartialExtension = ".download";
// So that the name with kPartialExtension still is a valid directory entry of 255 bytes.
inline constexpr std::size_t kMaxDiskName = 246;

// A name that had to be changed carries "_" and 8 hexadecimal digits of a hash of the whole name
// before its extension, so that two names do not become one file.
std::string disk_name(std::string_view name);

// Folder, separator, entry. An empty folder raises "No such file or directory".
std::string path_in(const std::string& folder, std::string_view entry);

}  // namespace velmora
