#include "cli/share_verbs.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>

#include "cli/progress.h"
#include "cli/values.h"
#include "cli/visible_text.h"

namespace velmora::cli {
namespace {

constexpr std::string_view kTrap = "Scan_my_files:";  // begins what a failed scan logs
constexpr std::string_view kScanning = "--";

struct Arguments {
  std::vector<std::string> folders;
  bool no_scan = false;
  std::size_t row = 0;
};

void print_shared(const Context& context, const nlohmann::json& out) {
  if (context.json) {
    Context::print_json(out);
    return;
  }
  Table table({"Row", "Directory"});
  for (const auto& folder : out["directories"]) {
    table.add({std::to_string(table.rows() + 1), value_text(folder)});
  }
  Context::print_table(table, "No directories.");
  Context::print(visible(shared_text(out["files"], out["bytes"], " shared")));
}

nlohmann::json shared_now(Servent& servent) {
  return {{"directories", servent.items("upload_config")},
          {"files", number_or_text(servent.text("sharenum_config"))},
          {"bytes", number_or_text(servent.text("sharesize_config"))}};
}

// A failed scan leaves its reason in the debug log and an empty total, which is shown as 0; the
// log is bounded, so the reason may be missing.
void require_scanned(Servent& servent, const std::string& log_before) {
  const std::string log = servent.text("frmDebug");
  if (occurrences(log, kTrap) > occurrences(log_before, kTrap)) {
    throw Failure(last_line_with(log, kTrap));
  }
  const std::string total = servent.text("sharesize_config");
  const bool log_was_cut = log.size() < log_before.size();
  const bool without_total =
      read_count(total) == 0 && read_count(servent.text("sharenum_config")) > 0;
  if (total.empty() || (without_total && log_was_cut)) {
    throw Failure("the scan failed; the debug log does not say why");
  }
}

void scan(Context& context) {
  Servent& servent = context.servent();
  const std::string log_before = servent.text("frmDebug");
  servent.subscribe({"sharenum_config"});
  servent.press("scan_config");
  constexpr double kLongest = 600;
  const bool scanned = servent.wait_until(
      context.deadline(kLongest), [&] { return servent.text("sharenum_config") != kScanning; });
  if (!scanned) throw Failure("the scan goes on; `velmora-cli shared` tells when it is over");
  require_scanned(servent, log_before);
}

std::string absolute_folder(const std::string& folder) {
  std::error_code error;
  const auto path = std::filesystem::absolute(folder, error).lexically_normal();
  if (error || !std::filesystem::is_directory(path, error)) {
    throw Failure(folder + " is not a directory");
  }
  std::string text = path.string();
  while (text.size() > 1 && text.back() == '/') text.pop_back();
  return to_wire(text);
}

void share(Context& context, const Arguments& given) {
  std::vector<std::string> folders;
  for (const std::string& folder : given.folders) folders.push_back(absolute_folder(folder));
  Servent& servent = context.servent();
  for (const std::string& folder : folders) {
    const auto is_there = [&] {
      const auto items = servent.items("upload_config");
      return std::find(items.begin(), items.end(), folder) != items.end();
    };
    if (is_there()) continue;
    servent.enter("upload_config", folder);
    if (!is_there()) throw Failure("the servent did not take " + folder);
  }
  if (!given.no_scan) scan(context);
  print_shared(context, shared_now(servent));
}

void stop(Context& context, std::size_t row) {
  Servent& servent = context.servent();
  servent.subscribe({"lupload"});
  const auto status = [&] {
    const List list = servent.list("lupload", row, 1);
    if (list.rows.empty()) {
      throw Failure(fmt::format("there is no upload {}: there are {}", row, list.total));
    }
    return list.cell(0, "Status");
  };
  constexpr std::string_view kStopped = "You Stopped";
  const std::string before = status();
  if (before == kStopped) throw Failure(fmt::format("row {} is stopped already", row));
  servent.act_on_row("activate", "lupload", row);
  // one that was under way may take a moment to show it
  const auto deadline = Clock::now() + seconds(is_uploading(before) ? 3 : 0);
  if (!servent.wait_until(deadline, [&] { return status() == kStopped; })) {
    throw Failure(fmt::format("row {} is no upload in progress: {}", row, status()));
  }
  if (context.json) {
    Context::print_json({{"row", row}, {"status", kStopped}});
  } else {
    Context::print(fmt::format("Upload {} stopped.", row));
  }
}

void add_sharing(CLI::App& app, Context& context) {
  auto given = std::make_shared<Arguments>();
  CLI::App* verb =
      add_verb(app, "share", kEverydayVerbs, "Share the files of directories, then scan them",
               "  velmora-cli share ~/Music\n  velmora-cli share --no-scan ~/Music ~/Books\n\n"
               "Files of subdirectories are shared with large_library only. To share one no more:\n"
               "  velmora-cli remove upload_config ROW\n  velmora-cli scan");
  verb->add_option_function<std::vector<std::string>>(
          "DIR",
          [given](const std::vector<std::string>& folders) {
            for (const std::string& folder : folders) {
              given->folders.push_back(unmarked(folder));  // as bytes, for the file system
            }
          },
          "The directories")
      ->required();
  verb->add_flag("--no-scan", given->no_scan, "Do not scan them now");
  verb->callback(
      [&context, given] { context.action = [&context, given] { share(context, *given); }; });

  verb = add_verb(app, "scan", kEverydayVerbs, "Scan the shared directories anew",
                  "  velmora-cli scan");
  verb->callback([&context] {
    context.action = [&context] {
      scan(context);
      print_shared(context, shared_now(context.servent()));
    };
  });

  verb =
      add_verb(app, "shared", kEverydayVerbs, "Print the shared directories and how much they hold",
               "  velmora-cli shared\n  velmora-cli shared --json");
  verb->callback([&context] {
    context.action = [&context] { print_shared(context, shared_now(context.servent())); };
  });
}

}  // namespace

void add_share_verbs(CLI::App& app, Context& context) {
  add_sharing(app, context);
  CLI::App* verb = add_verb(app, "uploads", kEverydayVerbs, "List the uploads to other servents",
                            "  velmora-cli uploads");
  verb->callback([&context] {
    context.action = [&context] {
      context.print_list(context.servent().list("lupload"), "No uploads.");
    };
  });

  auto given = std::make_shared<Arguments>();
  verb = add_verb(app, "stop", kEverydayVerbs, "Stop the upload in a row of `uploads`",
                  "  velmora-cli stop 1");
  verb->add_option("ROW", given->row, "The row's number, as `uploads` shows it")
      ->required()
      ->check(above_zero());
  verb->callback(
      [&context, given] { context.action = [&context, given] { stop(context, given->row); }; });
}

}  // namespace velmora::cli
