// A real folder of a test's own, gone with the object.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace velmora {

class TemporaryFolder {
 public:
  TemporaryFolder() {
    path_ = (std::filesystem::temp_directory_path() / "velmora-test-XXXXXX").string();
    if (mkdtemp(path_.data()) == nullptr) std::abort();
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  [[nodiscard]] std::string path(const std::string& below = "") const {
    return below.empty() ? path_ : path_ + "/" + below;
  }

 private:
  std::string path_;
};

}  // namespace velmora
