#include "app/program_arguments.h"

#include <CLI/CLI.hpp>
#include <cstdlib>

namespace velmora {
namespace {

// An unset variable in a script must not mean the usual profile, or all addresses.
CLI::Validator not_empty() {
  return {[](const std::string& text) { return text.empty() ? "is empty" : std::string(); }, ""};
}

CLI::Validator control_and_value() {
  return {[](const std::string& text) {
            return text.find('=') == std::string::npos ? "needs CONTROL=VALUE, not \"" + text + "\""
                                                       : std::string();
          },
          ""};
}

}  // namespace

std::optional<int> read_program_arguments(int argc, char** argv, const ProgramText& text,
                                          ProgramArguments& arguments) {
  CLI::App app{text.description};
  std::vector<std::string> set;
  app.add_option("--profile", arguments.profile,
                 "Folder for everything this servent owns (settings, lists, logs, control socket)")
      ->check(not_empty())
      ->type_name("DIR");
  app.add_option("--listen", arguments.listen,
                 "Address for both listeners and all outgoing connections; all addresses if absent")
      ->check(not_empty())
      ->type_name("ADDRESS");
  app.add_option("--set", set,
                 "Set a field after the settings are loaded, for example port_config=6400; "
                 "may be given several times")
      ->check(control_and_value())
      ->type_name("CONTROL=VALUE")
      ->allow_extra_args(false);
  app.add_flag("--verbose", arguments.verbose, "Write every debug line to standard error");
  if (text.has_window) {
    app.add_flag("--minimized", arguments.minimized,
                 "Start in the notification area, or minimised where there is none");
  }
  app.set_version_flag("--version", text.name + " " + text.version);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? EXIT_SUCCESS : kWrongCommandLine;
  }
  for (const std::string& field : set) {
    const auto sign = field.find('=');
    arguments.set.emplace_back(field.substr(0, sign), field.substr(sign + 1));
  }
  return std::nullopt;
}

}  // namespace velmora
