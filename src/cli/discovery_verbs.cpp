#include "cli/discovery_verbs.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "cli/values.h"
#include "cli/visible_text.h"

namespace velmora::cli {
namespace {

constexpr const char* kConnector = "connect_auto";
constexpr std::string_view kTrap = "Find_alive_hosts: ";  // begins what a failed batch logs

// The connector's button is enabled again when it has stopped.
bool runs(Servent& servent) {
  const auto all = servent.controls();
  const auto found = std::find_if(
      all.begin(), all.end(), [](const ControlFacts& facts) { return facts.name == kConnector; });
  if (found == all.end()) throw Failure("the servent has no automatic connector");
  return !found->enabled;
}

// One that runs already is left alone.
void start(Servent& servent) {
  if (runs(servent)) return;
  const std::size_t traps_before = occurrences(servent.text("frmDebug"), kTrap);
  servent.press(kConnector);
  const std::string log = servent.text("frmDebug");
  if (occurrences(log, kTrap) > traps_before) throw Failure(last_line_with(log, kTrap));
}

// Prints the connections that stand, under the row numbers of `hosts`; returns how many.
std::size_t print_connected(const Context& context, const List& hosts, bool running) {
  std::vector<std::string> headings = {"Row"};
  headings.insert(headings.end(), hosts.columns.begin(), hosts.columns.end());
  Table table(headings);
  nlohmann::json rows = nlohmann::json::array();
  for (std::size_t index = 0; index < hosts.rows.size(); ++index) {
    if (!is_connected(hosts.cell(index, "Stat"))) continue;
    std::vector<std::string> cells = {std::to_string(hosts.first + index)};
    cells.insert(cells.end(), hosts.rows[index].begin(), hosts.rows[index].end());
    table.add(cells);
    rows.push_back(row_json(hosts, index));
  }
  const std::size_t count = rows.size();
  if (context.json) {
    Context::print_json({{"running", running}, {"total", count}, {"rows", std::move(rows)}});
  } else if (count > 0) {
    Context::print_table(table, "");
  }
  return count;
}

void follow(Context& context) {
  Servent& servent = context.servent();
  bool stopped = false;
  try {
    stopped = servent.wait_until(context.deadline(0), [&] { return !runs(servent); });
  } catch (const Interrupted&) {
    throw Failure("interrupted; the servent goes on connecting");
  }
  const std::size_t count = print_connected(context, servent.list("lHosts"), !stopped);
  if (!stopped) throw Failure("the servent is still connecting; see `velmora-cli hosts` later");
  if (count == 0) throw Failure("no connection came about: are there hosts in the cache?");
}

void connect_auto(Context& context, bool detach) {
  if (!detach) context.watch_interrupt();
  Servent& servent = context.servent();
  servent.subscribe({kConnector});
  start(servent);
  if (!detach) {
    follow(context);
  } else if (context.json) {
    Context::print_json({{"running", runs(servent)}});
  }
}

void more(Context& context) {
  Servent& servent = context.servent();
  servent.press("more_cache");
  const std::string status = servent.text("StatusBar");
  if (status == "No Connections to send Ping!") throw Failure(status);
  if (context.json) {
    Context::print_json({{"status", status}});
  } else {
    Context::print(visible(status));
  }
}

}  // namespace

void add_discovery_verbs(CLI::App& app, Context& context) {
  auto detach = std::make_shared<bool>(false);
  CLI::App* verb = add_verb(
      app, "auto", kEverydayVerbs, "Connect to hosts of the cache until enough stand",
      "  velmora-cli auto\n  velmora-cli auto --timeout 60\n  velmora-cli auto --detach\n\n"
      "It waits until the connector has stopped, because max_out_host connections stand or\n"
      "the cache is at its end, and prints the connections. Hosts that give no answer are\n"
      "tried again and again; the servent goes on when this is interrupted.");
  verb->add_flag("--detach", *detach, "Only start to connect");
  verb->callback([&context, detach] {
    context.action = [&context, detach] { connect_auto(context, *detach); };
  });

  verb = add_verb(app, "more", kEverydayVerbs, "Learn of more hosts: ping the next connected one",
                  "  velmora-cli more\n\nThe hosts that answer come into the cache.");
  verb->callback([&context] { context.action = [&context] { more(context); }; });
}

}  // namespace velmora::cli
