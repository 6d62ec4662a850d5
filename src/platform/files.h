// What the engine asks of the file system. Paths are byte strings; a relative path is taken from
// the profile folder. Every failure is a PlatformError with the system's description. Only regular
// files are ever opened: links at the last component, folders, devices and FIFOs are refused.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

// An open file; destroying it closes it. Offsets count from 0.
class File {
 public:
  virtual ~File() = default;
  [[nodiscard]] virtual std::uint64_t size() const = 0;
  // At most `most` bytes from the offset; returns what there was (empty at the end).
  std::string read(std::uint64_t offset, std::size_t most) {
    std::string data;
    read_into(data, offset, most);
    return data;
  }
  // The same into the string's memory, which costs least when it had that size before.
  virtual void read_into(std::string& data, std::uint64_t offset, std::size_t most) = 0;
  // Writes all or raises an error; an offset beyond the end raises "Input past end of file".
  virtual void write(std::uint64_t offset, std::string_view data) = 0;
  virtual void truncate(std::uint64_t size) = 0;
  virtual void sync() = 0;
};

// A walk over the visible regular files (or folders) directly inside one folder, each once, in the
// folder's own order. Names that begin with "." are not visible; links are neither.
class DirectoryListing {
 public:
  virtual ~DirectoryListing() = default;
  virtual std::optional<std::string> next() = 0;
};

// Held while a program uses a profile; destroying it (or the end of the process) frees it.
class ProfileLock {
 public:
  virtual ~ProfileLock() = default;
};

class Files {
 public:
  virtual ~Files() = default;

  virtual std::unique_ptr<File> open_for_reading(const std::string& path) = 0;
  // Opens a file directly inside the folder for reading and writing, made if it is missing, never
  // truncated. The name is one directory entry: with a separator it is a "Bad file name".
  virtual std::unique_ptr<File> open_partial(const std::string& folder,
                                             const std::string& name) = 0;
  // Renames inside the folder and makes it last; an existing target raises "File exists".
  virtual void finish_partial(const std::string& folder, const std::string& from,
                              const std::string& to) = 0;
  // Deletes a regular file directly inside the folder; one that is missing is no error.
  virtual void remove_partial(const std::string& folder, const std::string& name) = 0;

  virtual std::unique_ptr<DirectoryListing> list(const std::string& folder) = 0;
  virtual std::unique_ptr<DirectoryListing> list_folders(const std::string& folder) = 0;
  virtual std::uint64_t size(const std::string& path) = 0;
  // The whole file; one larger than `most` raises "Out of memory".
  virtual std::string read_whole(const std::string& path, std::size_t most) = 0;
  // Temporary file beside it, write, fsync, rename, fsync of the folder: after any error or crash
  // the old file or the new one is whole.
  virtual void save(const std::string& path, std::string_view data) = 0;
  // Adds to the end, the file made if it is missing, in one write.
  virtual void append(const std::string& path, std::string_view data) = 0;

  // Nothing if another program uses this profile.
  virtual std::unique_ptr<ProfileLock> lock_profile() = 0;
};

}  // namespace velmora
