#include "cli/dns_verbs.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "cli/values.h"
#include "cli/visible_text.h"

namespace velmora::cli {
namespace {

// The label's lines end with a carriage return.
std::string status_lines(const std::string& status) {
  std::string lines;
  std::size_t start = 0;
  while (start <= status.size()) {
    const std::size_t end = std::min(status.find('\r', start), status.size());
    if (start > 0) lines += '\n';
    lines += visible(status.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

void start(Context& context) {
  Servent& servent = context.servent();
  const bool server_given = !servent.text("dns_ser").empty();
  servent.press("StartDNS");
  if (!server_given) {
    throw Failure(servent.text("dnsStat") + ": velmora-cli set dns_ser ADDRESS");
  }
  if (context.json) Context::print_json({{"started", true}});
}

void stop(Context& context) {
  context.servent().press("stopDNS");
  if (context.json) Context::print_json({{"stopped", true}});
}

void status(Context& context) {
  Servent& servent = context.servent();
  const std::string server = servent.text("dns_ser");
  const std::string text = servent.text("dnsStat");
  if (context.json) {
    Context::print_json({{"server", server}, {"status", text}});
  } else {
    Context::print(text.empty() ? "No look-up yet." : status_lines(text));
  }
}

}  // namespace

void add_dns_verbs(CLI::App& app, Context& context) {
  CLI::App* dns =
      add_verb(app, "dns", kEverydayVerbs, "Find the names of the hosts in the cache",
               "  velmora-cli set dns_ser 192.168.1.1\n  velmora-cli dns start\n"
               "  velmora-cli dns status\n\n"
               "One host every half a second, until all have a name that is not older than ten\n"
               "days; `velmora-cli set show_dns on` shows the names in the lists.");
  dns->require_subcommand(1);
  CLI::App* verb = dns->add_subcommand("start", "Start to look the names up");
  verb->callback([&context] { context.action = [&context] { start(context); }; });
  verb = dns->add_subcommand("stop", "Stop at the next host");
  verb->callback([&context] { context.action = [&context] { stop(context); }; });
  verb = dns->add_subcommand("status", "Tell how far it is");
  verb->callback([&context] { context.action = [&context] { status(context); }; });
}

}  // namespace velmora::cli
