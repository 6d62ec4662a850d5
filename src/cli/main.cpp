// The command `velmora-cli`: drives a running servent through the control socket of its profile.
// Ends with 0 on success, 1 when the verb failed (the reason on standard error), 2 when the
// command line was wrong.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "cli/behaviour_verbs.h"
#include "cli/cache_verbs.h"
#include "cli/context.h"
#include "cli/discovery_verbs.h"
#include "cli/dns_verbs.h"
#include "cli/download_verbs.h"
#include "cli/generic_verbs.h"
#include "cli/network_verbs.h"
#include "cli/search_verbs.h"
#include "cli/share_verbs.h"
#include "cli/values.h"
#include "cli/visible_text.h"
#include "cli/watch.h"

#ifndef VELMORA_VERSION
#define VELMORA_VERSION "0.1.0"
#endif

namespace velmora::cli {
namespace {

constexpr int kFailed = 1;
constexpr int kWrongCommandLine = 2;

std::string profile_without_option() {
  const char* home = std::getenv("HOME");
  return default_profile(std::getenv("XDG_DATA_HOME"),
                         home != nullptr && home[0] != '\0' ? home : ".");
}

// In the order in which the library wants them: the last one first. What stands behind "--" is no
// option; the library itself forgets that where a verb takes several arguments.
std::vector<std::string> marked_arguments(int argc, char** argv) {
  std::vector<std::string> arguments;
  bool options_over = false;
  for (int at = 1; at < argc; ++at) {
    std::string argument = argv[at];
    if (!options_over && argument == "--") {
      options_over = true;
      continue;
    }
    if (argument.starts_with('[') || (options_over && argument.starts_with('-'))) {
      argument.insert(argument.begin(), kArgumentMark);
    }
    arguments.push_back(std::move(argument));
  }
  std::reverse(arguments.begin(), arguments.end());
  return arguments;
}

// What the library says of a wrong command line, and where to read on.
std::string wrong_command_line(const CLI::App* app, const CLI::Error& error) {
  const auto verbs = app->get_subcommands();
  const auto left = app->remaining();
  std::string text = error.what();
  if (verbs.empty() && !left.empty() && !left.front().starts_with('-')) {
    text = "there is no verb \"" + left.front() + "\"";
  }
  std::erase(text, kArgumentMark);
  return "velmora-cli: " + visible(text) + "; see velmora-cli " +
         (verbs.empty() ? "" : verbs.front()->get_name() + " ") + "--help\n";
}

// An unset variable in a script must not mean another profile.
CLI::Validator not_empty() {
  return {[](const std::string& text) { return text.empty() ? "is empty" : std::string(); }, ""};
}

void add_options(CLI::App& app, Context& context) {
  context.profile = profile_without_option();
  app.add_option_function<std::string>(
         "--profile", [&context](const std::string& folder) { context.profile = unmarked(folder); },
         "The servent's profile folder")
      ->default_str(context.profile)
      ->check(not_empty())
      ->type_name("DIR");
  app.add_flag("--json", context.json, "Print the result as JSON on standard output");
  app.add_option("--timeout", context.timeout, "The longest wait for what a verb waits for")
      ->check(above_zero())
      ->type_name("SECONDS");
  app.set_version_flag("--version", "velmora-cli " VELMORA_VERSION);
  app.require_subcommand(0, 1);  // none is told below, in words of this program
  app.failure_message(wrong_command_line);
  app.get_formatter()->label("SUBCOMMAND", "VERB");
  app.fallthrough();
  app.footer(
      "Examples:\n"
      "  velmora-cli share ~/Music              share a directory\n"
      "  velmora-cli connect 192.0.2.7:6346     connect to a host\n"
      "  velmora-cli search violin concerto     search, then\n"
      "  velmora-cli download 3                 fetch row 3 of what was found\n"
      "  velmora-cli watch                      look at it all\n"
      "  velmora-cli controls '*_config'        what can be set, then\n"
      "  velmora-cli set max_in_upload 2        set it\n\n"
      "velmora-cli VERB --help tells more of a verb. Words that begin with a dash go behind --.\n"
      "It ends with 0 on success, 1 on failure, 2 when the command line was wrong.");
}

int run(int argc, char** argv) {
  CLI::App app("Drives a running Velmora servent.", "velmora-cli");
  Context context;
  add_options(app, context);
  add_network_verbs(app, context);
  add_discovery_verbs(app, context);
  add_cache_verbs(app, context);
  add_dns_verbs(app, context);
  add_search_verbs(app, context);
  add_download_verbs(app, context);
  add_share_verbs(app, context);
  add_behaviour_verbs(app, context);
  add_watch_verb(app, context);
  add_generic_verbs(app, context);
  try {
    app.parse(marked_arguments(argc, argv));
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kWrongCommandLine;
  }
  if (!context.action) {
    Context::note("which verb? velmora-cli --help lists them");
    return kWrongCommandLine;
  }
  try {
    context.action();
  } catch (const Failure& failure) {
    std::fflush(stdout);
    Context::note(failure.what());
    return kFailed;
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    Context::note("cannot write to standard output");
    return kFailed;
  }
  return 0;
}

}  // namespace
}  // namespace velmora::cli

int main(int argc, char** argv) {
  try {
    return velmora::cli::run(argc, argv);
  } catch (const std::exception& error) {
    velmora::cli::Context::note(error.what());
    return velmora::cli::kFailed;
  }
}
