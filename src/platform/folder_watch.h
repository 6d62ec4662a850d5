// What the engine asks of the machine to hear of changes in folders, so that it need not look for
// them again and again. It tells that something happened, never what: who hears it looks anew.
// Folders below a watched one are not watched with it. A folder that goes away is quietly no more
// watched. Paths are as in Files.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace velmora {

class FolderWatchEvents {
 public:
  virtual ~FolderWatchEvents() = default;
  // A file or folder of this name came into a watched folder, left it, or was written; the name is
  // empty when it is not known, as after more changes than the machine keeps. The receiver may
  // destroy the watch inside.
  virtual void on_folder_changed(std::string_view entry) = 0;
};

// Some watched folders; destroying it ends the watch on all of them.
class FolderWatch {
 public:
  virtual ~FolderWatch() = default;
  // Raises the platform's error ("No such file or directory", "No space left on device" for more
  // folders than the machine watches, and others). A folder given twice is watched once.
  virtual void add(const std::string& folder) = 0;
};

class FolderWatcher {
 public:
  virtual ~FolderWatcher() = default;
  // Raises the platform's error.
  virtual std::unique_ptr<FolderWatch> make_watch(FolderWatchEvents& events) = 0;
};

}  // namespace velmora
