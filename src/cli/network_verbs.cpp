#include "cli/network_verbs.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <set>

#include "cli/progress.h"
#include "cli/terminal.h"
#include "cli/values.h"
#include "cli/visible_text.h"

namespace velmora::cli {
namespace {

constexpr std::string_view kAlready = "Already connected to this host.";
constexpr std::string_view kFreed = "Sock freed";

std::size_t rows_where(const List& list, std::string_view column,
                       const std::function<bool(const std::string&)>& holds) {
  std::size_t count = 0;
  for (std::size_t index = 0; index < list.rows.size(); ++index) {
    if (holds(list.cell(index, column))) ++count;
  }
  return count;
}

// A servent without a screen has the control all the same.
std::string window(Servent& servent) {
  for (const ControlFacts& facts : servent.controls()) {
    if (facts.name == "frmMain" && !facts.enabled) return "none";
  }
  return servent.text("frmMain") == "true" ? "shown" : "hidden";
}

void status(Context& context) {
  Servent& servent = context.servent();
  const List hosts = servent.list("lHosts");
  const List downloads = servent.list("ldown");
  const List uploads = servent.list("lupload");
  const auto phase_is = [](Phase phase) {
    return
        [phase](const std::string& text) { return read_download_status(text, 0).phase == phase; };
  };
  const nlohmann::json out = {
      {"version", version_number(servent.text_or("version", ""))},
      {"window", window(servent)},
      {"message_port", number_or_text(servent.text("port_config"))},
      {"upload_port", number_or_text(servent.text("upport_config"))},
      {"connections_in", connections(hosts, "In")},
      {"connections_out", connections(hosts, "Out")},
      {"shared_files", number_or_text(servent.text("sharenum_config"))},
      {"shared_bytes", number_or_text(servent.text("sharesize_config"))},
      {"results", number_or_text(servent.text_or("totalsearch", "0"))},
      {"downloads", downloads.rows.size()},
      {"downloads_running", rows_where(downloads, "Status", phase_is(Phase::running))},
      {"downloads_done", rows_where(downloads, "Status", phase_is(Phase::done))},
      {"uploads_running", rows_where(uploads, "Status", is_uploading)},
      {"status", servent.text("StatusBar")},
  };
  if (context.json) {
    Context::print_json(out);
    return;
  }
  const auto say = [](std::string_view label, const std::string& text) {
    Context::print(visible(fmt::format("{:<13}{}", label, text)));
  };
  const auto text = [&](const char* name) { return shown_value(out[name]); };
  const std::string shown = text("window");
  say("Program", fmt::format("Velmora {} ({})", text("version"),
                             shown == "none" ? "no window" : "window " + shown));
  say("Ports", fmt::format("{} for messages, {} for uploads", value_text(out["message_port"]),
                           value_text(out["upload_port"])));
  say("Connections", fmt::format("{} in, {} out", text("connections_in"), text("connections_out")));
  say("Shared", shared_text(out["shared_files"], out["shared_bytes"]));
  say("Results", text("results"));
  say("Downloads", fmt::format("{} ({} running, {} done)", text("downloads"),
                               text("downloads_running"), text("downloads_done")));
  say("Uploads", fmt::format("{} running", text("uploads_running")));
  say("Status", text("status"));
}

// Where the connection to a host stands in lHosts, looked for again and again.
class HostWatch {
 public:
  HostWatch(Servent& servent, std::string_view host) : servent_(servent), address_(host) {
    const List list = servent_.list("lHosts");
    for (std::size_t index = 0; index < list.rows.size(); ++index) {
      if (list.cell(index, "Stat") != kFreed) before_.insert(list.cell(index, "Sock"));
    }
  }

  // Whether the attempt is over: connected, refused, or gone again.
  bool look(bool any_direction) {
    list_ = servent_.list("lHosts");
    const std::size_t row = find(any_direction);
    if (row == list_.rows.size()) return !status_.empty();
    row_ = row;
    status_ = list_.cell(row, "Stat");
    return !is_connecting(status_);
  }

  [[nodiscard]] const std::string& status() const { return status_; }
  [[nodiscard]] const List& list() const { return list_; }
  [[nodiscard]] std::size_t row() const { return row_; }

 private:
  [[nodiscard]] std::size_t find(bool any_direction) const {
    std::size_t found = list_.rows.size();
    for (std::size_t index = 0; index < list_.rows.size(); ++index) {
      const std::string stat = list_.cell(index, "Stat");
      if (stat == kFreed || (!any_direction && list_.cell(index, "Dir") != "Out")) continue;
      // the cell may show the host's name alone: then a slot that was free before is the one
      if (!shows_address(list_.cell(index, "Hosts"), address_) &&
          (any_direction || before_.contains(list_.cell(index, "Sock")))) {
        continue;
      }
      if (found == list_.rows.size() || is_connected(stat)) found = index;
    }
    return found;
  }

  Servent& servent_;
  std::string address_;
  std::set<std::string> before_;  // slots in use at the start
  List list_;
  std::size_t row_ = 0;
  std::string status_;
};

// The servent would take a number above the ports for another port.
void require_port(std::string_view host) {
  const std::size_t colon = host.find(':');
  if (colon == std::string_view::npos) return;
  constexpr std::uint64_t kLastPort = 65535;
  if (read_count(host.substr(colon + 1)) <= kLastPort) return;
  throw Failure(
      fmt::format("{} is no port: the last one is {}", host.substr(colon + 1), kLastPort));
}

void connect(Context& context, const std::string& host, bool wait) {
  require_port(host);
  Servent& servent = context.servent();
  servent.subscribe({"lHosts"});
  HostWatch watch(servent, without_port(host));
  servent.enter("new_host", host);
  const std::string message = servent.text("StatusBar");
  const bool already = message == kAlready;
  if (!message.empty() && !(already && wait)) throw Failure(message);
  if (!wait) {
    if (context.json) Context::print_json({{"host", host}, {"status", "Requesting to Connect"}});
    return;
  }
  constexpr double kWait = 10;
  const bool over =
      servent.wait_until(context.deadline(kWait), [&] { return watch.look(already); });
  if (is_connected(watch.status())) {
    if (context.json) {
      Context::print_json(row_json(watch.list(), watch.row()));
    } else {
      List row = watch.list();
      row.first = watch.row() + 1;
      row.rows = {row.rows[watch.row()]};
      Context::print_table(list_table(row), "");
    }
    return;
  }
  if (already && over) {
    throw Failure(message + " (" + watch.status() +
                  "; it can be tried again when that connection is \"Sock freed\")");
  }
  if (watch.status().empty()) throw Failure(host + " did not appear among the connections");
  throw Failure(host + ": " + watch.status() + (over ? "" : " (no answer yet)"));
}

void disconnect(Context& context, std::size_t row) {
  Servent& servent = context.servent();
  servent.subscribe({"lHosts"});
  const List before = servent.list("lHosts", row, 1);
  if (before.rows.empty()) {
    throw Failure(fmt::format("there is no connection {}: there are {}", row, before.total));
  }
  const std::string status_before = before.cell(0, "Stat");
  if (!is_connected(status_before) && !is_connecting(status_before)) {
    throw Failure(fmt::format("row {} is not connected: {}", row, status_before));
  }
  servent.act_on_row("activate", "lHosts", row);
  List list;
  constexpr double kWait = 5;
  const auto is_gone = [&] {
    list = servent.list("lHosts");
    if (row > list.rows.size() || list.cell(row - 1, "Sock") != before.cell(0, "Sock")) return true;
    const std::string status = list.cell(row - 1, "Stat");
    return !is_connected(status) && !is_connecting(status);
  };
  if (!servent.wait_until(context.deadline(kWait), is_gone)) {
    throw Failure(fmt::format("row {} is still connected: {}", row, list.cell(row - 1, "Stat")));
  }
  if (context.json) {
    Context::print_json({{"row", row}, {"host", before.cell(0, "Hosts")}});
  } else {
    Context::print(visible("Disconnected: " + before.cell(0, "Hosts")));
  }
}

void counters(Context& context) {
  Servent& servent = context.servent();
  Table table({"Counter", "Value", "Description"});
  nlohmann::json out = nlohmann::json::array();
  for (const ControlFacts& control : servent.controls()) {
    if (!control.name.ends_with("_stat")) continue;
    const std::string value = servent.text(control.name);
    const std::string& words = control.tooltip.empty() ? control.caption : control.tooltip;
    table.add({control.name, value, words});
    out.push_back({{"control", control.name}, {"value", value}, {"description", words}});
  }
  if (context.json) {
    Context::print_json(out);
  } else {
    Context::print_table(table, "No counters.");
  }
}

void print_text(const Context& context, std::string_view text) {
  if (context.json) {
    Context::print_json({{"text", text}});
  } else {
    write_now(visible_lines(text));
  }
}

void show_text(Context& context, const std::string& control) {
  std::string text = context.servent().text(control);
  if (!context.json && !text.empty() && !text.ends_with('\n')) text += '\n';
  print_text(context, text);
}

void follow_log(Context& context) {
  context.watch_interrupt();
  Servent& servent = context.servent();
  servent.subscribe({"frmDebug"});
  std::string known;
  const auto print_added = [&] {
    const std::string now = servent.text("frmDebug");
    const std::string added(added_text(known, now));
    if (!added.empty()) print_text(context, added);
    known = now;
    return false;
  };
  try {
    servent.wait_until(context.deadline(0), print_added);
  } catch (const Interrupted&) {
    // the way to end it
  }
}

void add_connection_verbs(CLI::App& app, Context& context) {
  struct Arguments {
    std::string host;
    bool no_wait = false;
    std::size_t row = 0;
  };
  auto given = std::make_shared<Arguments>();
  CLI::App* verb =
      add_verb(app, "connect", kEverydayVerbs, "Connect to a host, wait until it stands",
               "  velmora-cli connect 192.0.2.7\n"
               "  velmora-cli connect 192.0.2.7:6346 --timeout 5\n\n"
               "It waits 10 s, or as long as --timeout says, and prints the "
               "connection's row.");
  verb->add_option_function<std::string>(
          "HOST", [given](const std::string& text) { given->host = argument_text(text); },
          "ADDRESS or ADDRESS:PORT, the address in numbers")
      ->required();
  verb->add_flag("--no-wait", given->no_wait, "Only start to connect");
  verb->callback([&context, given] {
    context.action = [&context, given] { connect(context, given->host, !given->no_wait); };
  });

  given = std::make_shared<Arguments>();
  verb = add_verb(app, "disconnect", kEverydayVerbs, "Close the connection in a row of `hosts`",
                  "  velmora-cli disconnect 2");
  verb->add_option("ROW", given->row, "The row's number, as `hosts` shows it")
      ->required()
      ->check(above_zero());
  verb->callback([&context, given] {
    context.action = [&context, given] { disconnect(context, given->row); };
  });

  verb = add_verb(app, "hosts", kEverydayVerbs, "List the connections to other servents",
                  "  velmora-cli hosts\n  velmora-cli hosts --json");
  verb->callback([&context] {
    context.action = [&context] {
      context.print_list(context.servent().list("lHosts"), "No connections.");
    };
  });
}

void add_text_verbs(CLI::App& app, Context& context) {
  CLI::App* verb = add_verb(app, "counters", kEverydayVerbs, "Print the traffic counters",
                            "  velmora-cli counters");
  verb->callback([&context] { context.action = [&context] { counters(context); }; });

  auto follow = std::make_shared<bool>(false);
  verb = add_verb(app, "log", kEverydayVerbs, "Print the debug log",
                  "  velmora-cli log\n  velmora-cli log --follow");
  verb->add_flag("--follow", *follow, "Go on printing what is added, until interrupted");
  verb->callback([&context, follow] {
    context.action = [&context, follow] {
      if (*follow) {
        follow_log(context);
      } else {
        show_text(context, "frmDebug");
      }
    };
  });

  verb = add_verb(app, "unknown", kEverydayVerbs, "Print the messages of unknown type",
                  "  velmora-cli unknown");
  verb->callback([&context] { context.action = [&context] { show_text(context, "frmUnknown"); }; });
}

}  // namespace

std::size_t connections(const List& hosts, std::string_view direction) {
  std::size_t count = 0;
  for (std::size_t index = 0; index < hosts.rows.size(); ++index) {
    if (hosts.cell(index, "Dir") == direction && is_connected(hosts.cell(index, "Stat"))) ++count;
  }
  return count;
}

void add_network_verbs(CLI::App& app, Context& context) {
  CLI::App* verb =
      add_verb(app, "status", kEverydayVerbs, "Say in a few lines how the servent does",
               "  velmora-cli status\n  velmora-cli status --json");
  verb->callback([&context] { context.action = [&context] { status(context); }; });
  add_connection_verbs(app, context);
  add_text_verbs(app, context);
}

}  // namespace velmora::cli
