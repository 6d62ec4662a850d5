#include "share/library_watch.h"

#include <algorithm>
#include <utility>

#include "platform/trap.h"
#include "share/name_patterns.h"
#include "share/shared_list_file.h"

namespace velmora {

LibraryWatch::LibraryWatch(const Platform& platform, const Form& form, DebugLog& log,
                           std::function<void()> rescan)
    : loop_(platform.loop),
      watcher_(platform.folders),
      form_(form),
      log_(log),
      timer_(loop_.make_timer(kLibraryQuietMs, [this, rescan = std::move(rescan)] {
        timer_->set_enabled(false);
        rescan();
      })) {}

void LibraryWatch::changed() {
  const std::int64_t wait_ms =
      std::max<std::int64_t>(kLibraryQuietMs, next_scan_ms_ - loop_.now_ms());
  timer_->set_enabled(false);
  timer_->set_interval(static_cast<int>(wait_ms));
  timer_->set_enabled(true);
}

// Changes told by then are what this scan will find.
void LibraryWatch::scan_started() {
  timer_->set_enabled(false);
  next_scan_ms_ = loop_.now_ms() + kLibraryScanMs;
  told_ = false;
  next_.reset();
  if (watcher_ == nullptr) return;
  trap(log_, "Shared folders: changes are not noticed: ", [this] {
    next_ = watcher_->make_watch(*this);
  });
}

// Where one folder cannot be watched the next most often cannot either, so one line is enough.
void LibraryWatch::add(const std::string& folder) {
  if (!next_) return;
  const std::string error = trapped({}, [&] { next_->add(folder); });
  if (error.empty() || told_) return;
  told_ = true;
  log_error(log_, "Shared folders: changes in " + folder + " are not noticed: ", error);
}

void LibraryWatch::scan_ended() { watch_ = std::move(next_); }

void LibraryWatch::stop() {
  timer_->set_enabled(false);
  watch_.reset();
  next_.reset();
  next_scan_ms_ = 0;
}

// Every scan saves the list, which may lie in a shared folder; it would go on for ever.
void LibraryWatch::on_folder_changed(std::string_view entry) {
  trap(log_, "Shared folders: ", [&] {
    const bool passed_over = entry.starts_with('.') || entry == kSharedListFile;
    if (!passed_over && !NamePatterns(form_.exclude_config.text()).fit(entry)) changed();
  });
}

}  // namespace velmora
