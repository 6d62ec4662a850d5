// Folders and the names in them, opened below one folder: no name leads anywhere else.
#pragma once

#include <sys/stat.h>

#include <string>

#include "platform/uv/uv_descriptor.h"

namespace velmora::uv {

// Raises "Bad file name" for a path that the system would read only up to its first zero byte.
void check_path(const std::string& path);
// The same for what is not one directory entry.
void check_entry(const std::string& name);

// A relative folder is taken from `base`; the empty one is missing.
Descriptor open_folder(int base, const std::string& path);
// Never follows a link, never waits for a FIFO; anything but a regular file raises an error.
Descriptor open_regular(int base, const std::string& path, int flags, mode_t mode = 0);
// What the file is without opening it; raises an error unless it is regular.
struct stat stat_regular(int base, const std::string& path);
// Makes the folder and those above it, for the owner only, where missing.
void make_folders(const std::string& path);

// Makes what was changed in the folder last.
void sync_folder(int folder);

// A path cut into its folder ("." if none is named) and the entry in it.
struct SplitPath {
  std::string folder;
  std::string name;
};
SplitPath split_path(const std::string& path);

}  // namespace velmora::uv
