// One scan of the shared directories, done in steps so that the loop turns between them. It builds
// its own list and touches no other; who started it owns it. Subdirectories are not entered.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/behaviour.h"
#include "platform/debug_log.h"
#include "platform/files.h"
#include "platform/one_based.h"
#include "share/shared_file.h"

namespace velmora {

class SharedFileScan {
 public:
  SharedFileScan(std::vector<std::string> directories, Files& files, DebugLog& log,
                 const Behaviour& behaviour = kClassic);

  // The next step: one directory opened or one file recorded. Returns false when the scan has
  // ended. An error writes "Scan_my_files: " and the description, and ends it.
  bool Scan_my_files();

  // How far it is.
  [[nodiscard]] std::size_t files_recorded() const { return listing_ ? index_ - 1 : index_; }
  [[nodiscard]] const std::string& directory() const { return directory_; }  // the last entered
  [[nodiscard]] std::size_t directories_done() const {
    return listing_ ? next_directory_ - 1 : next_directory_;
  }
  [[nodiscard]] std::size_t directories() const { return directories_.size(); }

  // Bytes of all files as decimal text; empty after an error.
  [[nodiscard]] const std::string& total_text() const { return total_text_; }
  // The files found. After an error the records filled so far, the list not shrunk to them.
  OneBased<SharedFile> take_files();

 private:
  void step();
  void enlarge();
  void enter_directory();
  void record_file();
  void take_next_name();

  std::vector<std::string> directories_;
  Files& files_;
  DebugLog& log_;
  const Behaviour& behaviour_;
  OneBased<SharedFile> shared_files_{kMaxSharedFiles};
  std::size_t index_ = 0;  // of the record being filled
  std::int32_t total_ = 0;
  std::size_t next_directory_ = 0;
  std::string directory_;
  std::unique_ptr<DirectoryListing> listing_;  // while a directory is being walked
  bool ended_ = false;
  std::string total_text_;
};

}  // namespace velmora
