#include "cli/download_verbs.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>

#include "cli/follow.h"
#include "cli/progress.h"
#include "cli/values.h"
#include "cli/visible_text.h"

namespace velmora::cli {
namespace {

struct Arguments {
  std::vector<std::size_t> rows;
  bool detach = false;
};

struct Queued {
  std::size_t row = 0;  // in ldown; 0: not there
  std::string name;
  std::string status;
};

Queued find_download(const List& downloads, const List& result) {
  for (std::size_t index = 0; index < downloads.rows.size(); ++index) {
    const std::string name = downloads.cell(index, "Filename");
    if (is_download_of(name, result.cell(0, "Filename"), result.cell(0, "Ext"))) {
      return {index + 1, name, downloads.cell(index, "Status")};
    }
  }
  return {};
}

// The servent would only say "No such file or directory", and the user look for the wrong file.
void require_download_folder(Servent& servent) {
  const std::string folder = servent.text("down_config");
  constexpr std::string_view kHint = "; choose one with: velmora-cli set down_config DIR";
  if (folder.empty()) throw Failure(fmt::format("no download folder is set{}", kHint));
  std::error_code error;
  if (folder.front() == '/' && !std::filesystem::is_directory(folder, error)) {
    throw Failure(fmt::format("the download folder {} is not a directory{}", folder, kHint));
  }
}

List find_result(Servent& servent, std::size_t row) {
  List result = servent.list("lfound", row, 1);
  if (result.rows.empty()) {
    throw Failure(fmt::format("there is no result {}: there are {}", row, result.total));
  }
  return result;
}

// Queues a search result and finds its entry; one that was queued before keeps its place.
Queued queue_result(Servent& servent, const List& result) {
  const std::size_t row = result.first;
  Queued before = find_download(servent.list("ldown"), result);
  servent.act_on_row("activate", "lfound", row);
  Queued entry;
  constexpr double kAppearing = 3;
  const bool found = servent.wait_until(Clock::now() + seconds(kAppearing), [&] {
    entry = find_download(servent.list("ldown"), result);
    return entry.row > 0;
  });
  if (!found) {
    throw Failure(fmt::format("result {} was not queued: {}", row, servent.text("StatusBar")));
  }
  if (before.row > 0) {
    Context::note(entry.name + (before.status == "Done" ? " was fetched before, and is not again"
                                                        : " is in the download list already"));
  }
  return entry;
}

void print_started(const Context& context, const std::vector<Queued>& entries) {
  nlohmann::json out = nlohmann::json::array();
  for (const Queued& entry : entries) {
    out.push_back({{"row", entry.row}, {"name", entry.name}});
    if (!context.json) Context::print(visible("Started: " + entry.name));
  }
  if (context.json) Context::print_json(out);
}

// Starts what waits in the download list and follows these entries of it.
void start(Context& context, const std::vector<Queued>& entries, bool detach) {
  const bool needed = std::any_of(entries.begin(), entries.end(),
                                  [](const Queued& entry) { return entry.status != "Done"; });
  Follow follow(context);
  for (const Queued& entry : entries) {
    follow.add(entry.row, entry.name, needed ? entry.status : std::string());
  }
  if (needed) context.servent().press("resume_down");
  if (detach) {
    print_started(context, entries);
  } else {
    follow.run();
  }
}

void download(Context& context, const Arguments& given) {
  context.watch_interrupt();
  Servent& servent = context.servent();
  servent.subscribe({"ldown"});
  require_download_folder(servent);
  std::vector<List> results;  // of all rows, before anything is queued
  for (const std::size_t row : given.rows) results.push_back(find_result(servent, row));
  std::vector<Queued> entries;
  entries.reserve(results.size());
  for (const List& result : results) entries.push_back(queue_result(servent, result));
  start(context, entries, given.detach);
}

void resume(Context& context, bool detach) {
  context.watch_interrupt();
  Servent& servent = context.servent();
  servent.subscribe({"ldown"});
  const List downloads = servent.list("ldown");
  std::vector<Queued> entries;
  for (std::size_t index = 0; index < downloads.rows.size(); ++index) {
    const std::string status = downloads.cell(index, "Status");
    if (status != "Done") {
      entries.push_back({index + 1, downloads.cell(index, "Filename"), status});
    }
  }
  if (!entries.empty()) require_download_folder(servent);
  if (entries.empty() && !context.json) Context::print("Nothing to resume.");
  start(context, entries, detach);
}

}  // namespace

void add_download_verbs(CLI::App& app, Context& context) {
  auto given = std::make_shared<Arguments>();
  CLI::App* verb = add_verb(
      app, "download", kEverydayVerbs, "Fetch results of a search and follow them to the end",
      "  velmora-cli download 3\n  velmora-cli download 3 7 12 --timeout 600\n"
      "  velmora-cli download --detach 3\n\n"
      "It succeeds when every file is Done. A file that is in the download list already is\n"
      "resumed. Where the output is no terminal, every change of a status is a line, and every\n"
      "tenth of a file. Interrupted, it leaves the downloads running in the servent.");
  verb->add_option("ROW", given->rows, "Numbers of rows, as `search` and `results` show them")
      ->required()
      ->check(above_zero());
  verb->add_flag("--detach", given->detach, "Only start them");
  verb->callback(
      [&context, given] { context.action = [&context, given] { download(context, *given); }; });

  given = std::make_shared<Arguments>();
  verb = add_verb(app, "resume", kEverydayVerbs, "Start and follow every unfinished download",
                  "  velmora-cli resume\n  velmora-cli resume --detach");
  verb->add_flag("--detach", given->detach, "Only start them");
  verb->callback([&context, given] {
    context.action = [&context, given] { resume(context, given->detach); };
  });

  verb =
      add_verb(app, "downloads", kEverydayVerbs, "List the downloads", "  velmora-cli downloads");
  verb->callback([&context] {
    context.action = [&context] {
      context.print_list(context.servent().list("ldown"), "No downloads.");
    };
  });
}

}  // namespace velmora::cli
