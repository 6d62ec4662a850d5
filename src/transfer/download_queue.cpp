#include "transfer/download_queue.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/number.h"
#include "platform/trap.h"
#include "transfer/disk_name.h"

namespace velmora {

DownloadQueue::DownloadQueue(EventLoop& loop, Files& files, Form& form, DebugLog& log,
                             const SearchResults& results, DownloadList& downloads,
                             DownloadClient& client, const Behaviour& behaviour)
    : files_(files),
      form_(form),
      log_(log),
      results_(results),
      downloads_(downloads),
      client_(client),
      behaviour_(behaviour),
      whole_(loop, files, form, log, results, downloads, client),
      buttons_(form, log, whole_, [this] { return whole_on_; }),
      downl_file_t_(loop.make_timer(1000, [this] { whole_.pass(); })) {
  form_.lfound.on_activate = [this](std::size_t row) { queue_result(row); };
  form_.resume_down.on_click = [this] {
    if (whole_on_) return whole_.resume_all();
    download_manager();
  };
}

std::string DownloadQueue::follow_behaviour() {
  if (behaviour_.whole_files == whole_on_) return {};
  whole_on_ = behaviour_.whole_files;
  downl_file_t_->set_enabled(whole_on_);
  if (whole_on_) return whole_.begin();
  whole_.end();
  return {};
}

void DownloadQueue::stop() {
  downl_file_t_->set_enabled(false);
  if (whole_on_) whole_.settle();
}

std::string DownloadQueue::save() { return whole_on_ ? whole_.save() : std::string(); }

void DownloadQueue::queue_result(std::size_t row) {
  if (row == 0) return;
  trap(log_, "queue_result: ", [&] {
    if (whole_on_) return whole_.queue(row);
    const search_result& result =
        results_.search_results().at(results_.results_of_row(row).front());
    if (queued(result)) {
      form_.StatusBar.set_panel(1, "This file is already qued to Download.");
      return;
    }
    const std::size_t place = place_for_next();
    auto& list = downloads_.download_list();
    list.grow_to(place);
    DownloadRecord entry;
    static_cast<search_result&>(entry) = result;
    entry.status = "Queued";
    list.at(place) = std::move(entry);
    downloads_.redraw();
  });
}

// Kept: only the names are compared, so another host's copy or another extension is refused too.
bool DownloadQueue::queued(const search_result& result) const {
  const auto& list = downloads_.download_list();
  return std::any_of(list.begin(), list.end(),
                     [&](const DownloadRecord& entry) { return entry.name == result.name; });
}

// A running entry is never taken, whatever its numbers say: its connection still writes for it.
std::size_t DownloadQueue::place_for_next() const {
  const auto& list = downloads_.download_list();
  const auto finished = std::find_if(list.begin(), list.end(), [](const DownloadRecord& entry) {
    return entry.state < 1 && val(entry.size) == static_cast<double>(entry.bytes_received);
  });
  return static_cast<std::size_t>(finished - list.begin()) + 1;
}

// Kept: the final name is measured, not the partial file's. So within one run a download goes on
// from the bytes it counted, and a finished entry is connected again like any other; the client
// leaves such a file alone.
void DownloadQueue::measure(DownloadRecord& record) {
  trapped({}, [&] {
    record.bytes_received =
        files_.size(path_in(form_.down_config.text(), disk_name(record.full_name())));
  });
}

// Kept: the number of downloads at a time has no limit here.
void DownloadQueue::download_manager() {
  trap(log_, "download_manager: ", [&] {
    auto& list = downloads_.download_list();
    for (std::size_t i = 1; i <= list.upper_bound(); ++i) {
      DownloadRecord& record = list.at(i);
      if (record.state >= 1) continue;
      measure(record);
      const std::string text =
          client_.connect(i, record.address, to_port(val(record.port)), record.host_name);
      if (!text.empty()) form_.StatusBar.set_panel(1, text);
    }
  });
}

}  // namespace velmora
