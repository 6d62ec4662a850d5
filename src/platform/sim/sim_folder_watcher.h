// The simulated watch on folders: it tells nothing by itself; a test says what has changed. The
// watcher outlives what runs on its host.
#pragma once

#include <limits>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/folder_watch.h"

namespace velmora::sim {

class SimFolderWatcher : public FolderWatcher {
 public:
  std::unique_ptr<FolderWatch> make_watch(FolderWatchEvents& events) override;

  // Tells every watch that has the folder.
  void change(const std::string& folder, std::string_view entry);
  [[nodiscard]] std::set<std::string> watched() const;
  // So many folders a watch; then "No space left on device".
  void set_most(std::size_t folders) { most_ = folders; }

 private:
  class Watch;

  std::vector<Watch*> watches_;
  std::size_t most_ = std::numeric_limits<std::size_t>::max();
};

}  // namespace velmora::sim
