// Files in memory for one simulated host, with the faults of a real disk: full, failing, or losing
// what was not synced. Paths are plain keys ("a//b/" and "./a/b" mean "a/b"; the profile folder is
// "." and always there); a folder exists once it was made or a test put a file in it. Listings are
// in the order in which the files were made. A full disk keeps the beginning of a write or append.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/files.h"

namespace velmora::sim {

class Disk;

class SimFiles : public Files {
 public:
  SimFiles();
  ~SimFiles() override;

  std::unique_ptr<File> open_for_reading(const std::string& path) override;
  std::unique_ptr<File> open_partial(const std::string& folder, const std::string& name) override;
  void finish_partial(const std::string& folder, const std::string& from,
                      const std::string& to) override;
  void remove_partial(const std::string& folder, const std::string& name) override;
  std::unique_ptr<DirectoryListing> list(const std::string& folder) override;
  std::unique_ptr<DirectoryListing> list_folders(const std::string& folder) override;
  std::uint64_t size(const std::string& path) override;
  std::string read_whole(const std::string& path, std::size_t most) override;
  void save(const std::string& path, std::string_view data) override;
  void append(const std::string& path, std::string_view data) override;
  std::unique_ptr<ProfileLock> lock_profile() override;

  // What tests do to the disk.
  void make_folder(const std::string& path);            // and those above it
  void put(const std::string& path, std::string data);  // makes its folder
  void remove(const std::string& path);
  [[nodiscard]] bool exists(const std::string& path) const;
  [[nodiscard]] std::string content(const std::string& path) const;               // "" when missing
  [[nodiscard]] std::vector<std::string> names(const std::string& folder) const;  // hidden too
  void set_capacity(std::uint64_t bytes);  // then "No space left on device"
  void fail_next(int calls, int error);    // the next calls raise this errno
  // Files keep what was last synced, files never synced are gone; open files and the profile lock
  // are let go of (using an old File raises an error).
  void crash();

 private:
  std::shared_ptr<Disk> disk_;
};

}  // namespace velmora::sim
