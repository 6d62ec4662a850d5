// The disk behind SimFiles: what is stored under which path, what of it would outlive a crash, and
// the faults that tests asked for. Paths here are in normal form; "" is the profile folder.
#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::sim {

// Without empty and "." parts and without a "/" at the end.
std::string normal_path(const std::string& path);
// Both of a path in normal form.
std::string folder_of(const std::string& path);
std::string name_of(const std::string& path);

struct StoredFile {
  void make_last();

  std::uint64_t order = 0;  // files made earlier have a lower one
  std::string content;
  std::string synced;
  bool lasts = false;  // its name outlives a crash
};

class Disk {
 public:
  // Each raises a PlatformError.
  void check_fault();                                // the fault that a test asked for
  void check_folder(const std::string& path) const;  // as the caller wrote it: "" is no folder
  void check_place(const std::string& path) const;   // a file may stand there
  [[nodiscard]] std::shared_ptr<StoredFile> existing(const std::string& path) const;
  std::shared_ptr<StoredFile> existing_or_new(const std::string& path);
  void write(StoredFile& file, std::uint64_t offset, std::string_view data);
  void resize(StoredFile& file, std::uint64_t size);

  void replace(const std::string& path, std::string data);  // a new file, synced
  void make_folder(const std::string& path);
  void crash();
  [[nodiscard]] std::uint64_t room() const;
  [[nodiscard]] std::vector<std::string> names_in(const std::string& folder) const;
  [[nodiscard]] std::vector<std::string> folders_in(const std::string& folder) const;

  std::map<std::string, std::shared_ptr<StoredFile>> files;
  std::set<std::string> folders{""};
  std::uint64_t capacity = std::numeric_limits<std::uint64_t>::max();
  int faults_left = 0;
  int fault = 0;
  int crashes = 0;
  bool locked = false;

 private:
  std::shared_ptr<StoredFile> make(const std::string& path);

  std::uint64_t made_ = 0;
};

}  // namespace velmora::sim
