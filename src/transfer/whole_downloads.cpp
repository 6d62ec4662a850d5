#include "transfer/whole_downloads.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <utility>

#include "platform/error.h"
#include "platform/number.h"
#include "platform/trap.h"
#include "transfer/disk_name.h"
#include "transfer/download_sources.h"
#include "transfer/download_store.h"

namespace velmora {
namespace {

constexpr std::array<int, 6> kPauses_min = {1, 2, 4, 8, 16, 30};  // then always the last
constexpr int kMinute_ms = 60'000;
constexpr int kDoneShown_ms = 5000;    // before a finished entry is cleared away
constexpr int kSaveAgain_ms = 60'000;  // after a file that could not be written
constexpr const char* kWaiting = "Waiting for its turn";
constexpr const char* kQueuedAlready = "This file is already qued to Download.";

bool is_running(const DownloadRecord& entry) { return entry.state >= 1; }

std::size_t sources(const DownloadRecord& entry) { return entry.whole->others.size() + 1; }

// The sources that were added last are used before all others, and no other before the next pause.
void use_added(DownloadRecord& entry, std::size_t added) {
  WholeFile& whole = *entry.whole;
  auto& others = whole.others;
  std::rotate(others.begin(), others.end() - static_cast<std::ptrdiff_t>(added), others.end());
  if (whole.turn == Turn::no_source) {
    use_source(entry, std::move(others.front()));
    others.erase(others.begin());
  } else {
    next_source(entry);
  }
  whole.tried = sources(entry) - added;
  whole.turn = Turn::waiting;
}

}  // namespace

WholeDownloads::WholeDownloads(EventLoop& loop, Files& files, Form& form, DebugLog& log,
                               const SearchResults& results, DownloadList& downloads,
                               DownloadClient& client)
    : loop_(loop),
      files_(files),
      form_(form),
      log_(log),
      results_(results),
      downloads_(downloads),
      client_(client) {}

void WholeDownloads::changed() {
  changed_ = true;
  downloads_.redraw();
}

std::string WholeDownloads::begin() {
  std::string text;
  trap(log_, "load_downloads: ", [&] {
    const bool in_doubt = std::exchange(in_doubt_, true);  // until all of the file is in the list
    take_over_all();
    std::vector<DownloadRecord> loaded;
    text = load_downloads(files_, loaded, kMaxDownloads);
    if (!text.empty()) log_.debug_log(text);
    add_loaded(std::move(loaded));
    in_doubt_ = in_doubt || !text.empty();
    downloads_.redraw();
  });
  return text;
}

// Also where an entry was missed for want of memory.
void WholeDownloads::take_over_all() {
  for (DownloadRecord& entry : list()) {
    if (!entry.whole) take_over(entry);
  }
}

void WholeDownloads::take_over(DownloadRecord& entry) {
  entry.whole = std::make_unique<WholeFile>();
  entry.id = downloads_.next_id();
  entry.whole->exact = entry.bytes_received > 0;
  if (is_running(entry)) {
    entry.whole->turn = Turn::running;
  } else if (entry.status == "Done") {
    entry.whole->turn = Turn::done;
  }
  if (!is_running(entry) && entry.fetched) cut_to_received(entry);
  changed_ = true;
}

// What lies behind the bytes that count may not lie where it belongs.
void WholeDownloads::cut_to_received(const DownloadRecord& entry) {
  trap(log_, "download_manager: ", [&] {
    const std::string& folder = form_.down_config.text();
    const std::string name = disk_name(entry.full_name());
    const std::uint64_t length = entry.bytes_received;
    if (PartialFile::length_on_disk(files_, folder, name) <= length) return;
    PartialFile(files_, folder, name, length).cut(length);
  });
}

void WholeDownloads::add_loaded(std::vector<DownloadRecord> loaded) {
  for (DownloadRecord& entry : loaded) {
    if (const std::size_t there = find(entry); there != 0) {
      add_to(list().at(there), entry);
      continue;
    }
    entry.id = downloads_.next_id();
    list().grow_to(list().upper_bound() + 1);
    list().at(list().upper_bound()) = std::move(entry);
  }
}

// What an entry that stayed in the list lost when the switch was turned off.
void WholeDownloads::add_to(DownloadRecord& entry, const DownloadRecord& loaded) {
  WholeFile& whole = *entry.whole;
  if (!same_file(entry, loaded) || whole.turn == Turn::done) return;
  add_sources(entry, loaded);
  if (is_running(entry) || loaded.whole->turn != Turn::paused) return;
  whole.turn = Turn::paused;
  entry.status = "Paused";
}

void WholeDownloads::end() {
  trap(log_, "download_manager: ", [&] { settle(); });
  const std::string error = save();
  if (!error.empty()) log_.debug_log(error);
  for (DownloadRecord& entry : list()) {
    entry.whole.reset();
    if (entry.status == kWaiting) entry.status = "Queued";
  }
  downloads_.redraw();
}

// The entry with that full name, whatever its size: one name on disk is one download.
std::size_t WholeDownloads::find(const search_result& result) const {
  const auto& all = downloads_.download_list();
  const auto found = std::find_if(all.begin(), all.end(), [&](const DownloadRecord& entry) {
    return entry.name == result.name && entry.extension == result.extension;
  });
  return found == all.end() ? 0 : static_cast<std::size_t>(found - all.begin()) + 1;
}

void WholeDownloads::queue(std::size_t row) {
  settle();
  const std::vector<std::size_t> members = results_.results_of_row(row);
  for (std::size_t i = 0; i < members.size(); ++i) {
    const search_result& result = results_.search_results().at(members[i]);
    const std::size_t entry = find(result);
    if (entry == 0) {
      add_entry(result);
    } else {
      offer(entry, result, i == 0);
    }
  }
  changed();
}

void WholeDownloads::add_entry(const search_result& result) {
  if (list().upper_bound() >= kMaxDownloads) {
    keep_only([](const DownloadRecord& entry) { return entry.whole->turn != Turn::done; });
  }
  DownloadRecord entry;
  static_cast<search_result&>(entry) = result;
  entry.whole = std::make_unique<WholeFile>();
  entry.id = downloads_.next_id();
  entry.status = "Queued";
  list().grow_to(list().upper_bound() + 1);
  list().at(list().upper_bound()) = std::move(entry);
}

// A result for an entry that is there: a source of it, unless it is another file.
void WholeDownloads::offer(std::size_t entry, const search_result& result, bool by_person) {
  DownloadRecord& record = list().at(entry);
  WholeFile& whole = *record.whole;
  if (!same_file(record, result)) {
    if (by_person) form_.StatusBar.set_panel(1, kQueuedAlready);
    return;
  }
  if (by_person) forgive_source(record, result);
  const AddedSource added = add_source(record, result);
  const bool over = whole.turn == Turn::done || whole.turn == Turn::no_source;
  if (by_person && over && added != AddedSource::as_another) {
    whole.turn = Turn::waiting;  // a finished file may be gone since; one that is there stays
    record.status = "Queued";
  } else if (added == AddedSource::as_another) {
    if (whole.turn == Turn::failed || whole.turn == Turn::no_source) use_added(record, 1);
    if (by_person) form_.StatusBar.set_note("Another source for a file in the list.");
  } else if (by_person && added == AddedSource::too_many) {
    form_.StatusBar.set_note("This file has as many sources as it can have.");
  } else if (by_person) {
    form_.StatusBar.set_panel(1, kQueuedAlready);
  }
}

void WholeDownloads::resume_all() {
  trap(log_, "download_manager: ", [&] {
    settle();
    for (DownloadRecord& entry : list()) {
      WholeFile& whole = *entry.whole;
      if (whole.turn == Turn::done || is_running(entry)) continue;
      whole.turn = Turn::waiting;
      whole.tried = 0;
      whole.pauses = 0;
    }
    start_waiting();
  });
  changed();
}

void WholeDownloads::pause(std::size_t entry) {
  settle();
  DownloadRecord& record = list().at(entry);
  if (record.whole->turn == Turn::done || !client_.stop(entry, "Paused")) return;
  record.whole->turn = Turn::paused;
  record.status = "Paused";
  changed();
}

// The partial file goes with its entry; a finished file is never touched.
void WholeDownloads::remove(std::size_t entry) {
  settle();
  if (!client_.stop(entry, "Deleted")) return;
  DownloadRecord& record = list().at(entry);
  if (record.whole->turn != Turn::done) {
    const std::string error = trapped({}, [&] {
      PartialFile::remove(files_, form_.down_config.text(), disk_name(record.full_name()));
    });
    if (!error.empty()) log_error(log_, "delete_down: ", error);
  }
  const std::uint64_t id = record.id;
  keep_only([id](const DownloadRecord& other) { return other.id != id; });
}

void WholeDownloads::move_up(std::size_t entry) { swap(entry, entry - 1); }
void WholeDownloads::move_down(std::size_t entry) { swap(entry, entry + 1); }

void WholeDownloads::swap(std::size_t one, std::size_t other) {
  if (!list().has(one) || !list().has(other)) return;
  std::vector<std::size_t> place(list().upper_bound() + 1);
  for (std::size_t i = 0; i < place.size(); ++i) place[i] = i;
  std::swap(place[one], place[other]);
  std::swap(list().at(one), list().at(other));
  client_.renumber(place);
  changed();
}

// Entries that run are always wanted.
void WholeDownloads::keep_only(const std::function<bool(const DownloadRecord&)>& wanted) {
  std::vector<std::size_t> place(list().upper_bound() + 1);
  std::size_t last = 0;
  for (std::size_t i = 1; i < place.size(); ++i) {
    if (!is_running(list().at(i)) && !wanted(list().at(i))) continue;
    place[i] = ++last;
    if (last != i) list().at(last) = std::move(list().at(i));
  }
  if (last == list().upper_bound()) return;
  list().resize(last);
  client_.renumber(place);
  changed();
}

void WholeDownloads::pass() {
  trap(log_, "download_manager: ", [&] {
    settle();
    start_waiting();
    clear_finished();
    show_minutes();
  });
  if (!changed_ || loop_.now_ms() < next_save_ms_) return;
  const std::string error = save();
  if (error.empty()) return;
  log_.debug_log(error);
  form_.StatusBar.set_panel(1, error);
  next_save_ms_ = loop_.now_ms() + kSaveAgain_ms;
}

std::string WholeDownloads::save() {
  if (!changed_) return {};
  std::string error = in_doubt_ ? keep_downloads(files_) : "";
  if (!error.empty()) return error;
  in_doubt_ = false;
  error = save_downloads(files_, downloads_.download_list());
  if (error.empty()) changed_ = false;
  return error;
}

void WholeDownloads::settle() {
  take_over_all();
  std::vector<std::size_t> at_their_end;
  for (std::size_t i = 1; i <= list().upper_bound(); ++i) {
    const DownloadRecord& entry = list().at(i);
    if (entry.whole->turn != Turn::running || is_running(entry)) continue;
    changed();
    if (!ended(i)) at_their_end.push_back(i);
  }
  if (!at_their_end.empty()) find_sources(at_their_end);
}

// What became of an attempt. The next source is used at once, until all were; then it is false.
bool WholeDownloads::ended(std::size_t entry) {
  DownloadRecord& record = list().at(entry);
  WholeFile& whole = *record.whole;
  if (record.status == "Done") {
    whole.turn = Turn::done;
    whole.done_ms = loop_.now_ms();
    whole.others.clear();
    whole.dropped.clear();
    return true;
  }
  if (record.bytes_received > whole.had) whole.pauses = 0;
  whole.turn = Turn::waiting;
  if (std::exchange(whole.differs, false)) {
    if (drop_source(record)) return true;
    whole.turn = Turn::no_source;
    record.status = "No source has the same file";
    return false;
  }
  ++whole.tried;
  if (whole.tried >= sources(record)) return false;
  next_source(record);
  return true;
}

// Entries that have tried all their sources look for more among the results, in one walk; those
// that find none wait. With no place left to remember who has another file, none is looked for, or
// the same ones would be asked for ever.
void WholeDownloads::find_sources(const std::vector<std::size_t>& entries) {
  std::unordered_map<std::string, std::vector<std::size_t>> by_name;
  std::vector<std::size_t> had;
  for (const std::size_t i : entries) {
    by_name[list().at(i).name].push_back(i);
    had.push_back(list().at(i).whole->others.size());
  }
  for (const search_result& result : results_.search_results()) {
    const auto named = by_name.find(result.name);
    if (named == by_name.end()) continue;
    for (const std::size_t i : named->second) {
      DownloadRecord& entry = list().at(i);
      if (entry.whole->dropped.size() >= kMaxSources) continue;
      if (same_file(entry, result)) add_source(entry, result);
    }
  }
  for (std::size_t i = 0; i < entries.size(); ++i) {
    DownloadRecord& entry = list().at(entries[i]);
    const std::size_t added = entry.whole->others.size() - had[i];
    if (added > 0) {
      use_added(entry, added);
    } else if (entry.whole->turn == Turn::waiting) {
      wait_longer(entry);
    }
  }
}

void WholeDownloads::wait_longer(DownloadRecord& entry) {
  WholeFile& whole = *entry.whole;
  const std::size_t pause = std::min(whole.pauses, kPauses_min.size() - 1);
  whole.due_ms = loop_.now_ms() + std::int64_t{kPauses_min.at(pause)} * kMinute_ms;
  ++whole.pauses;
  whole.tried = 0;
  whole.turn = Turn::failed;
  next_source(entry);
}

void WholeDownloads::start_waiting() {
  const auto running = std::count_if(list().begin(), list().end(), is_running);
  double free = typed_number(form_.max_down.text()) - static_cast<double>(running);
  for (std::size_t i = 1; i <= list().upper_bound(); ++i) {
    DownloadRecord& entry = list().at(i);
    WholeFile& whole = *entry.whole;
    if (whole.turn == Turn::failed && loop_.now_ms() >= whole.due_ms) whole.turn = Turn::waiting;
    if (whole.turn != Turn::waiting) continue;
    if (free < 1) {
      entry.status = kWaiting;
      continue;
    }
    start(i);
    if (is_running(entry)) --free;
  }
}

// Whatever becomes of the attempt, the next pass finds it.
void WholeDownloads::start(std::size_t entry) {
  DownloadRecord& record = list().at(entry);
  WholeFile& whole = *record.whole;
  whole.turn = Turn::running;
  whole.had = record.bytes_received;
  const std::string error = trapped({}, [&] {
    if (final_name_is_taken(record)) return;
    const std::uint64_t there = PartialFile::length_on_disk(files_, form_.down_config.text(),
                                                            disk_name(record.full_name()));
    const std::uint64_t size = record.exact_size();
    record.bytes_received = whole.had = size == 0 ? there : std::min(there, size);
    const std::string refused =
        client_.connect(entry, record.address, to_port(val(record.port)), record.host_name);
    if (!refused.empty()) form_.StatusBar.set_panel(1, refused);
  });
  if (!error.empty()) record.status = error;
}

// Nothing is fetched for a name that is taken, for nothing is ever replaced. It is this download's
// own file when all of that was fetched in an earlier run.
bool WholeDownloads::final_name_is_taken(DownloadRecord& entry) {
  const std::string& folder = form_.down_config.text();
  const std::string name = disk_name(entry.full_name());
  const std::uint64_t finished = PartialFile::finished_length(files_, folder, name);
  if (finished == 0) return false;
  const bool own = entry.whole->exact && finished == entry.exact_size() &&
                   PartialFile::length_on_disk(files_, folder, name) == 0;
  entry.status = own ? "Done" : "File exists";
  if (own) entry.bytes_received = finished;
  entry.whole->tried = sources(entry) - 1;  // another source would not help
  return true;
}

void WholeDownloads::show_minutes() {
  for (DownloadRecord& entry : list()) {
    if (entry.whole->turn != Turn::failed) continue;
    const std::int64_t left = entry.whole->due_ms - loop_.now_ms();
    entry.whole->minutes = static_cast<int>((left + kMinute_ms - 1) / kMinute_ms);
  }
  downloads_.redraw();
}

void WholeDownloads::clear_finished() {
  if (!form_.clear_down.checked()) return;
  keep_only([now = loop_.now_ms()](const DownloadRecord& entry) {
    return entry.whole->turn != Turn::done || now - entry.whole->done_ms < kDoneShown_ms;
  });
}

}  // namespace velmora
