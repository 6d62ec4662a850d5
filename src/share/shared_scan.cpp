#include "share/shared_scan.h"

#include <cstdint>
#include <utility>

#include "platform/number.h"
#include "platform/trap.h"
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
      behaviour_(behaviour) {
  form_.scan_config.on_click = [this] { start(); };
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

void SharedScan::stop() {
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

void SharedScan::start() {
  if (scanning()) return;
  form_.scan_config.set_enabled(false);
  form_.sharenum_config.set_text("--");
  const bool started = trap(log_, "Scan_my_files: ", [this] {
    scan_ = std::make_shared<SharedFileScan>(form_.upload_config.items(), files_, log_, behaviour_);
    post_turn();
  });
  if (started) return;
  scan_.reset();
  give_back();
}

void SharedScan::post_turn() {
  show_progress();
  loop_.post([this, scan = std::weak_ptr<SharedFileScan>(scan_)] {
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
