// The classic scan of the shared directories. It builds its own list and touches no other; who
// started it owns it. Subdirectories are not entered, an error ends it.
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
#include "share/file_scan.h"
#include "share/shared_file.h"

namespace velmora {

// What every scan records: a directory as the user typed it without the separator at its end, and a
// name, which for MPEG audio has its information behind it.
std::string without_last_separator(std::string directory);
std::string stored_name(Files& files, const std::string& path, const std::string& name,
                        DebugLog& log, const Behaviour& behaviour);

class SharedFileScan : public FileScan {
 public:
  SharedFileScan(std::vector<std::string> directories, Files& files, DebugLog& log,
                 const Behaviour& behaviour = kClassic);

  bool Scan_my_files() override;
  [[nodiscard]] std::size_t files_recorded() const override {
    return listing_ ? index_ - 1 : index_;
  }
  [[nodiscard]] const std::string& directory() const override { return directory_; }
  [[nodiscard]] std::size_t directories_done() const override {
    return listing_ ? next_directory_ - 1 : next_directory_;
  }
  [[nodiscard]] std::size_t directories() const override { return directories_.size(); }
  [[nodiscard]] const std::string& total_text() const override { return total_text_; }
  // After an error the records filled so far, the list not shrunk to them.
  OneBased<SharedFile> take_files() override;

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
