#include "cli/watch.h"

#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <map>

#include "cli/network_verbs.h"
#include "cli/progress.h"
#include "cli/terminal.h"
#include "cli/values.h"
#include "cli/visible_text.h"
#include "cli/watch_frame.h"

namespace velmora::cli {
namespace {

constexpr auto kBetweenFrames = std::chrono::milliseconds(250);
constexpr auto kLookAnyway = std::chrono::milliseconds(1000);
constexpr std::size_t kMostRows = 200;  // of a list; a screen holds fewer

class Watch {
 public:
  explicit Watch(Context& context) : context_(context), servent_(context.servent()) {
    for (const ControlFacts& control : servent_.controls()) {
      if (control.name.ends_with("_stat")) counters_.push_back(control.name);
    }
  }

  void once() {
    if (context_.json) {
      Context::print_json(everything());
      return;
    }
    for (const std::string& line : watch_frame(state(kPlainWidth), kPlainWidth, 0)) {
      Context::print(line);
    }
  }

  void live(Clock::time_point until) {
    context_.watch_interrupt();
    servent_.subscribe({});
    const WholeScreen screen;
    try {
      while (Clock::now() < until) {
        draw();
        const auto next = Clock::now() + kBetweenFrames;
        if (!wait(std::min(until, next), true)) return;
        if (!wait(std::min(until, next - kBetweenFrames + kLookAnyway), false)) return;
      }
    } catch (const Interrupted&) {
      // the way to end it
    }
  }

 private:
  static constexpr std::size_t kPlainWidth = 100;

  // Waits until then, or (unless `all`) for the next change; false: the key that ends was pressed.
  bool wait(Clock::time_point until, bool all) {
    while (Clock::now() < until) {
      const auto change = servent_.client().notice(until, input_);
      if (change && !all) return true;
      if (!change && input_ >= 0 && Clock::now() < until && quit_pressed()) return false;
    }
    return true;
  }

  bool quit_pressed() {
    std::array<char, 64> keys = {};
    const ssize_t count = read(STDIN_FILENO, keys.data(), keys.size());
    if (count <= 0) input_ = -1;  // no keys will come any more
    const auto end = keys.begin() + std::max<ssize_t>(count, 0);
    return std::any_of(keys.begin(), end, [](char key) { return key == 'q' || key == 'Q'; });
  }

  void draw() {
    const TerminalSize size = terminal_size();
    std::string out = "\x1b[H";
    const auto lines = watch_frame(state(size.columns), size.columns, size.lines);
    for (std::size_t at = 0; at < lines.size(); ++at) {
      out += (at > 0 ? "\r\n" : "") + lines[at] + "\x1b[K";
    }
    write_now(out + "\x1b[J");
  }

  nlohmann::json everything() {
    nlohmann::json counters = nlohmann::json::object();
    for (const std::string& name : counters_) counters[name] = servent_.text(name);
    return {{"version", version_number(servent_.text_or("version", ""))},
            {"status", servent_.text("StatusBar")},
            {"hosts", list_json(servent_.list("lHosts"))["rows"]},
            {"downloads", list_json(servent_.list("ldown"))["rows"]},
            {"uploads", list_json(servent_.list("lupload"))["rows"]},
            {"counters", std::move(counters)}};
  }

  WatchState state(std::size_t width) {
    WatchState state;
    state.title = visible(fmt::format("Velmora {}   ports {} and {}   {} files shared{}",
                                      version_number(servent_.text_or("version", "")),
                                      servent_.text("port_config"), servent_.text("upport_config"),
                                      servent_.text("sharenum_config"),
                                      input_ >= 0 && output_is_terminal() ? "   q ends" : ""));
    state.status = visible(servent_.text("StatusBar"));
    const List hosts = servent_.list("lHosts", 1, kMostRows);
    const List uploads = servent_.list("lupload", 1, kMostRows);
    state.sections = {{fmt::format("Connections ({} in, {} out)", connections(hosts, "In"),
                                   connections(hosts, "Out")),
                       table_lines(hosts, width)},
                      downloads(width),
                      {fmt::format("Uploads ({})", uploads.total), table_lines(uploads, width)}};
    for (const std::string& name : counters_) {
      state.counters.emplace_back(name.substr(0, name.size() - 5), visible(servent_.text(name)));
    }
    return state;
  }

  static std::vector<std::string> table_lines(const List& list, std::size_t width) {
    std::vector<std::string> lines;
    if (list.rows.empty()) return lines;
    const std::string text = list_table(list).text(width);
    for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
      lines.push_back(text.substr(at, text.find('\n', at) - at));
    }
    return lines;
  }

  WatchSection downloads(std::size_t width) {
    const List list = servent_.list("ldown", 1, kMostRows);
    const double now = std::chrono::duration<double>(Clock::now() - started_).count();
    WatchSection section{fmt::format("Downloads ({})", list.total), {}};
    for (std::size_t index = 0; index < list.rows.size(); ++index) {
      const std::string name = list.cell(index, "Filename");
      const std::string status = list.cell(index, "Status");
      const std::uint64_t size = read_count(list.cell(index, "Size"));
      auto& [metered_name, meter] = meters_[index];
      if (metered_name != name) {
        metered_name = name;
        meter = RateMeter();
      }
      if (const auto percent = read_download_status(status, size).percent) {
        meter.add(now, *percent * static_cast<double>(size) / 100);
      }
      section.lines.push_back(progress_line(name, status, size, meter.rate(now), width));
    }
    return section;
  }

  Context& context_;
  Servent& servent_;
  std::vector<std::string> counters_;
  std::map<std::size_t, std::pair<std::string, RateMeter>> meters_;  // by row of ldown
  Clock::time_point started_ = Clock::now();
  int input_ = input_is_terminal() ? STDIN_FILENO : -1;
};

}  // namespace

void add_watch_verb(CLI::App& app, Context& context) {
  auto duration = std::make_shared<double>(0);
  CLI::App* verb = add_verb(app, "watch", kEverydayVerbs, "Show a live view of the servent",
                            "  velmora-cli watch\n  velmora-cli watch --for 60\n\n"
                            "q or Ctrl-C ends it. Where the output is no terminal, and with "
                            "--json, it\nprints the state once.");
  verb->add_option("--for", *duration, "End after so many seconds")
      ->check(above_zero())
      ->type_name("SECONDS");
  verb->callback([&context, duration] {
    context.action = [&context, duration] {
      Watch watch(context);
      if (context.json || !output_is_terminal()) {
        watch.once();
      } else {
        watch.live(*duration > 0 ? Clock::now() + seconds(*duration) : context.deadline(0));
      }
    };
  });
}

}  // namespace velmora::cli
