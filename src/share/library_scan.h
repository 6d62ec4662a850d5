// The scan of a large library: the shared directories with all folders below them, and as many
// files as file numbers can name. What cannot be read or shared is left out with a line in the
// debug log, and the scan goes on. Hidden files and folders, links, and names that the patterns fit
// are left out without one. A folder that is reached twice counts once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/behaviour.h"
#include "platform/debug_log.h"
#include "platform/files.h"
#include "share/file_scan.h"
#include "share/name_patterns.h"
#include "share/shared_index.h"

namespace velmora {

inline constexpr std::size_t kMaxLibraryFolders = 10'000;
inline constexpr std::size_t kMaxLibraryDepth = 32;  // folders below a shared directory
// The largest size that the single precision of an answer holds without growing out of 32 bits.
inline constexpr std::uint64_t kMaxSharedFileSize = 2'147'483'520;
inline constexpr std::size_t kMaxScanLines = 10;  // what one scan writes into the debug log

class LibraryScan : public FileScan {
 public:
  // The index is the list before, of which unchanged files keep their numbers; it and the files are
  // not owned. `on_folder` hears of each folder before it is read.
  LibraryScan(std::vector<std::string> directories, NamePatterns left_out, Files& files,
              const SharedIndex& before, DebugLog& log,
              std::function<void(const std::string& folder)> on_folder,
              const Behaviour& behaviour = kClassic);

  bool Scan_my_files() override;
  [[nodiscard]] std::size_t files_recorded() const override { return found_.size(); }
  [[nodiscard]] const std::string& directory() const override { return folder_.path; }
  [[nodiscard]] std::size_t directories_done() const override;
  [[nodiscard]] std::size_t directories() const override { return directories_.size(); }
  [[nodiscard]] const std::string& total_text() const override { return total_text_; }
  OneBased<SharedFile> take_files() override;

 private:
  struct Folder {
    std::string path;  // without a separator at its end; empty for the root
    std::size_t depth = 0;
  };

  void step();
  void add_folder(std::string path, std::size_t depth);
  void enter(Folder folder);
  void read_folder_name();
  void read_file_name();
  void record_file(const std::string& name);
  void end();
  void tell(const std::string& text);

  std::vector<std::string> directories_;
  NamePatterns left_out_;
  Files& files_;
  const SharedIndex& before_;
  DebugLog& log_;
  std::function<void(const std::string& folder)> on_folder_;
  const Behaviour& behaviour_;

  std::vector<SharedFile> found_;
  std::int64_t total_ = 0;
  std::string total_text_;
  std::size_t next_directory_ = 0;
  std::deque<Folder> waiting_;  // of the directory that is being read
  std::unordered_set<std::string> known_;
  Folder folder_;  // the last entered
  std::unique_ptr<DirectoryListing> sub_folders_;
  std::unique_ptr<DirectoryListing> names_;
  std::size_t told_ = 0;
  bool ended_ = false;
};

}  // namespace velmora
