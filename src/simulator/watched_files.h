// The files of a watched platform.
#pragma once

#include "simulator/watched_platform.h"

namespace velmora::simulator {

class WatchedFiles : public Files {
 public:
  explicit WatchedFiles(Seam& seam) : seam_(seam) {}
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

 private:
  Seam& seam_;
};

}  // namespace velmora::simulator
