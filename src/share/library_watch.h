// Finds out by itself that the shared folders have changed. It has the machine watch the folders
// that a scan visits, and asks for the next scan once nothing has changed for two seconds, at most
// every thirty. It scans nothing and knows no files; names that the patterns fit, hidden ones and
// the saved list of shared files are no changes. On a machine that cannot watch it only asks when
// it is told of a change.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "form/form.h"
#include "platform/debug_log.h"
#include "platform/platform.h"

namespace velmora {

inline constexpr int kLibraryQuietMs = 2000;
inline constexpr int kLibraryScanMs = 30'000;  // from the beginning of a scan to the next one's

class LibraryWatch : private FolderWatchEvents {
 public:
  // `rescan` runs in a tick of the watch's own timer.
  LibraryWatch(const Platform& platform, const Form& form, DebugLog& log,
               std::function<void()> rescan);

  // A scan follows.
  void changed();

  // What a scan tells. The folders that it adds are watched from the call on, those of the scan
  // before until scan_ended().
  void scan_started();
  void add(const std::string& folder);
  void scan_ended();

  // Watches nothing and asks for nothing more.
  void stop();

 private:
  void on_folder_changed(std::string_view entry) override;

  EventLoop& loop_;
  FolderWatcher* watcher_;
  const Form& form_;
  DebugLog& log_;
  std::unique_ptr<Timer> timer_;
  std::unique_ptr<FolderWatch> watch_;
  std::unique_ptr<FolderWatch> next_;  // of the scan that runs
  std::int64_t next_scan_ms_ = 0;      // no scan before that
  bool told_ = false;                  // that the scan's folders cannot all be watched
};

}  // namespace velmora
