#include "share/shared_scan.h"

#include <cstdint>
#include <utility>

#include "platform/number.h"
#include "platform/trap.h"
#include "share/library_scan.h"
#include "share/shared_list_file.h"

namespace velmora {
namespace {

// A turn of the loop must stay short; a file costs a few system calls and 20 KB at most.
constexpr int kStepsPerTurn = 8;
constexpr std::int64_t kMsPerTurn = 2;

}  // namespace

SharedScan::SharedScan(const Platform& platform, Form& form, SharedIndex& index, DebugLog& log,
                       const Behaviour& behaviour)
    : loop_(platform.loop),
      files_(platform.files),
      form_(form),
      index_(index),
      log_(log),
      behaviour_(behaviour),
      watch_(platform, form, log, [this] { rescan(); }) {
  form_.scan_config.on_click = [this] {
    if (scanning() && !by_itself_) return;
    by_itself_ = false;
    form_.scan_config.set_enabled(false);
    form_.sharenum_config.set_text("--");
    start();
  };
  form_.upload_config.on_enter = [this] {
    const std::string directory = form_.upload_config.text();
    if (directory.empty()) return;
    form_.upload_config.add(directory);
    form_.upload_config.set_text({});
  };
  form_.upload_config.on_delete = [this](std::size_t row) { form_.upload_config.remove_item(row); };
}

std::string SharedScan::load_saved() {
  std::string total;
  std::string error = load_shared(files_, kSharedListFile, index_, total);
  show_total(total);
  if (!error.empty()) form_.StatusBar.set_panel(1, error);
  return error;
}

void SharedScan::follow_behaviour() {
  if (behaviour_.large_library == follows_) return;
  follows_ = behaviour_.large_library;
  if (follows_) {
    watch_.changed();
  } else if (scanning() && by_itself_) {
    stop();
  } else {
    watch_.stop();
  }
}

// By itself: a scan that runs is not disturbed, a list without directories is left alone, and the
// count stays to be seen, which goes out with every pong.
void SharedScan::rescan() {
  if (scanning()) return watch_.changed();
  if (form_.upload_config.items().empty()) return;
  by_itself_ = true;
  start();
}

void SharedScan::stop() {
  watch_.stop();
  if (!scanning()) return;
  scan_.reset();
  give_back();
}

// The page as it is while no scan runs.
void SharedScan::give_back() {
  form_.scan_progress.finish();
  form_.scan_config.set_enabled(true);
  show_count();
}

// A scan that began by itself makes way for one that a person wants.
void SharedScan::start() {
  const bool started = trap(log_, "Scan_my_files: ", [this] {
    scan_ = new_scan();
    post_turn();
  });
  if (started) return;
  scan_.reset();
  give_back();
}

std::shared_ptr<FileScan> SharedScan::new_scan() {
  const auto& directories = form_.upload_config.items();
  if (!behaviour_.large_library) {
    return std::make_shared<SharedFileScan>(directories, files_, log_, behaviour_);
  }
  watch_.scan_started();
  return std::make_shared<LibraryScan>(
      directories, NamePatterns(form_.exclude_config.text()), files_, index_, log_,
      [this](const std::string& folder) { watch_.add(folder); }, behaviour_);
}

void SharedScan::post_turn() {
  show_progress();
  loop_.post([this, scan = std::weak_ptr<FileScan>(scan_)] {
    if (scan.expired() || trap(log_, "Scan_my_files: ", [this] { turn(); })) return;
    scan_.reset();
    give_back();
  });
}

void SharedScan::turn() {
  const std::int64_t start_ms = loop_.now_ms();
  for (int steps = 0; steps < kStepsPerTurn; ++steps) {
    if (!scan_->Scan_my_files()) {
      finish();
      return;
    }
    if (loop_.now_ms() - start_ms >= kMsPerTurn) break;
  }
  post_turn();
}

void SharedScan::finish() {
  index_.replace(scan_->take_files());
  const std::string total = scan_->total_text();
  scan_.reset();
  if (behaviour_.large_library) watch_.scan_ended();
  show_total(total);
  const std::string error = save_shared(files_, kSharedListFile, index_);
  if (!error.empty()) form_.StatusBar.set_panel(1, error);
  give_back();
}

void SharedScan::show_progress() {
  const std::size_t files = scan_->files_recorded();
  std::string text = std::to_string(files) + (files == 1 ? " file" : " files");
  if (!scan_->directory().empty()) text += ", " + scan_->directory();
  form_.scan_progress.show(std::move(text), scan_->directories_done(), scan_->directories());
}

void SharedScan::show_count() {
  form_.sharenum_config.set_text(std::to_string(index_.shared_files().upper_bound()));
}

void SharedScan::show_total(const std::string& total) {
  const std::string text = thousands(total);
  form_.sharesize_config.set_text(text.empty() ? "0" : text);
}

}  // namespace velmora
