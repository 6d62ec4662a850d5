// The real file system as one servent sees it. Calls are synchronous. The profile folder is held
// open, so that renaming or moving it changes nothing for a running program.
#pragma once

#include <memory>
#include <string>

#include "platform/files.h"
#include "platform/uv/uv_descriptor.h"

namespace velmora::uv {

class UvFiles : public Files {
 public:
  // Makes the folder, for its owner only, if it is missing.
  explicit UvFiles(const std::string& profile);

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
  Descriptor profile_;
};

}  // namespace velmora::uv
