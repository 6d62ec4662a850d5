#include "platform/sim/sim_folder_watcher.h"

#include <algorithm>

#include "platform/error.h"

namespace velmora::sim {

class SimFolderWatcher::Watch : public FolderWatch {
 public:
  Watch(SimFolderWatcher& watcher, FolderWatchEvents& receiver)
      : events(receiver), watcher_(watcher) {
    watcher_.watches_.push_back(this);
  }
  ~Watch() override { std::erase(watcher_.watches_, this); }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  void add(const std::string& folder) override {
    if (folders.size() >= watcher_.most_) throw PlatformError(Errc::disk_full);
    folders.insert(folder);
  }

  FolderWatchEvents& events;
  std::set<std::string> folders;

 private:
  SimFolderWatcher& watcher_;
};

std::unique_ptr<FolderWatch> SimFolderWatcher::make_watch(FolderWatchEvents& events) {
  return std::make_unique<Watch>(*this, events);
}

void SimFolderWatcher::change(const std::string& folder, std::string_view entry) {
  const std::vector<Watch*> told = watches_;
  for (Watch* watch : told) {
    const bool stands = std::find(watches_.begin(), watches_.end(), watch) != watches_.end();
    if (stands && watch->folders.contains(folder)) watch->events.on_folder_changed(entry);
  }
}

std::set<std::string> SimFolderWatcher::watched() const {
  std::set<std::string> all;
  for (const Watch* watch : watches_) all.insert(watch->folders.begin(), watch->folders.end());
  return all;
}

}  // namespace velmora::sim
