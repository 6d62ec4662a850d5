#include "cli/follow.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "cli/terminal.h"
#include "cli/visible_text.h"

namespace velmora::cli {
namespace {

constexpr auto kBetweenLooks = std::chrono::milliseconds(250);
constexpr double kStale = 2;       // seconds in which an old status may still be shown
constexpr double kNextSource = 2;  // seconds in which the servent goes to the next source
constexpr double kNotBegun = 15;   // seconds in which a started entry leaves "Queued"

double seconds_since(Clock::time_point time) {
  return std::chrono::duration<double>(Clock::now() - time).count();
}

}  // namespace

void Follow::add(std::size_t row, const std::string& name, const std::string& status) {
  // an entry that ended may have lost its row to one that was queued behind it
  const bool known = std::any_of(entries_.begin(), entries_.end(), [&](const Entry& entry) {
    return entry.row == row && entry.name == name;
  });
  if (!known) entries_.push_back({row, name, status, status, 0, {}, {}, false, -1, {}});
}

void Follow::run() {
  Servent& servent = context_.servent();
  started_ = Clock::now();
  const auto deadline = context_.deadline(0);
  try {
    whole_files_ = servent.text_or("whole_files_behaviour", "false") == "true";
    for (look(); !all_over() && Clock::now() < deadline; look()) {
      const auto next = Clock::now() + kBetweenLooks;
      servent.pass(std::min(next, deadline));
    }
  } catch (const Interrupted&) {
    throw Failure("interrupted; the downloads go on in the servent");
  }
  report();
}

bool Follow::all_over() const {
  return std::all_of(entries_.begin(), entries_.end(), [](const Entry& e) { return e.over; });
}

void Follow::look() {
  const List list = context_.servent().list("ldown");
  for (Entry& entry : entries_) {
    if (entry.over) continue;
    look_at(entry, list);
    if (!context_.json && !output_is_terminal()) tell(entry);
  }
  if (!context_.json && output_is_terminal()) draw();
}

void Follow::look_at(Entry& entry, const List& list) {
  if (list.cell(entry.row - 1, "Filename") != entry.name) {
    for (std::size_t index = 0; index < list.rows.size(); ++index) {
      if (list.cell(index, "Filename") == entry.name) entry.row = index + 1;  // it was moved
    }
  }
  if (list.cell(entry.row - 1, "Filename") != entry.name) {
    entry.status = "no longer in the download list";
    entry.over = true;
    return;
  }
  const std::string source = list.cell(entry.row - 1, "Location");
  if (std::exchange(entry.source, source) != source) entry.ended_at = -1;
  entry.status = list.cell(entry.row - 1, "Status");
  entry.size = read_count(list.cell(entry.row - 1, "Size"));
  const DownloadStatus status = read_download_status(entry.status, entry.size);
  const double passed = seconds_since(started_);
  if (status.percent) {
    entry.meter.add(passed, *status.percent * static_cast<double>(entry.size) / 100);
  }
  const bool ended = status.phase == Phase::done || status.phase == Phase::ended;
  if (!ended) entry.ended_at = -1;
  if (ended && entry.ended_at < 0) entry.ended_at = passed;
  if (status.phase == Phase::running) entry.status_before.clear();
  entry.over = ended ? over(entry, passed) : entry.status == "Queued" && passed > kNotBegun;
}

// Of an entry that shows an end: whether it is one.
bool Follow::over(const Entry& entry, double passed) const {
  if (entry.status == entry.status_before && passed <= kStale) return false;
  const bool next_source =
      whole_files_ && entry.status != "Done" && entry.status.find("again in ") == std::string::npos;
  return !next_source || passed - entry.ended_at > kNextSource;
}

// What it showed before it was started is no news, unless that is all that it ever shows.
void Follow::tell(Entry& entry) {
  if (!entry.over && entry.status == entry.status_before) return;
  if (!entry.told.is_news(entry.status, entry.size)) return;
  write_now(visible(entry.name + ": " + entry.status) + "\n");
}

void Follow::draw() {
  const TerminalSize size = terminal_size();
  std::string out;
  if (lines_drawn_ > 0) out += fmt::format("\x1b[{}A", lines_drawn_);
  lines_drawn_ = 0;
  for (const Entry& entry : entries_) {
    if (lines_drawn_ + 1 >= size.lines) break;  // what scrolled away cannot be drawn again
    out += "\r" + progress_line(entry.name, entry.status, entry.size,
                                entry.meter.rate(seconds_since(started_)), size.columns - 1);
    out += "\x1b[K\n";
    ++lines_drawn_;
  }
  write_now(out);
}

void Follow::report() const {
  nlohmann::json out = nlohmann::json::array();
  std::size_t done = 0;
  std::string first_failure;
  for (const Entry& entry : entries_) {
    out.push_back({{"row", entry.row}, {"name", entry.name}, {"status", entry.status}});
    if (entry.over && entry.status == "Done") {
      ++done;
    } else if (first_failure.empty()) {
      first_failure = entry.name + ": " + entry.status + (entry.over ? "" : " (goes on)");
    }
  }
  if (context_.json) Context::print_json(out);
  if (done == entries_.size()) return;
  if (entries_.size() == 1) throw Failure(first_failure);
  throw Failure(fmt::format("{} of {} done; {}", done, entries_.size(), first_failure));
}

}  // namespace velmora::cli
