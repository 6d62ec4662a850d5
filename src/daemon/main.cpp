// velmorad: the servent without a screen.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "app/profile_paths.h"
#include "app/servent.h"
#include "platform/error.h"
#include "platform/uv/uv_platform.h"

namespace {

constexpr int kWrongCommandLine = 2;

struct Arguments {
  std::string profile;
  std::string listen;
  std::vector<std::string> set;
  bool verbose = false;
};

std::vector<std::pair<std::string, std::string>> split(const std::vector<std::string>& set) {
  std::vector<std::pair<std::string, std::string>> fields;
  for (const std::string& text : set) {
    const auto sign = text.find('=');
    if (sign == std::string::npos) {
      throw velmora::PlatformError(velmora::Errc::type_mismatch,
                                   "--set needs CONTROL=VALUE, not \"" + text + "\"");
    }
    fields.emplace_back(text.substr(0, sign), text.substr(sign + 1));
  }
  return fields;
}

void make_folder(const std::string& path) {
  try {
    velmora::uv::UvPlatform::make_folder(path);
  } catch (const velmora::PlatformError& error) {
    throw velmora::PlatformError(error.code(),
                                 "cannot make the folder " + path + ": " + error.description());
  }
  if (!std::filesystem::is_directory(path)) throw std::runtime_error(path + " is not a directory");
}

int run(const Arguments& arguments) {
  const velmora::ProfilePaths paths = velmora::profile_paths(arguments.profile);
  make_folder(std::filesystem::path(paths.settings).parent_path());
  make_folder(paths.profile);
  velmora::uv::UvPlatform platform(paths.profile, arguments.listen);
  velmora::ServentOptions options;
  options.version = VELMORA_VERSION;
  options.settings_path = paths.settings;
  options.set = split(arguments.set);
  std::string last_logged;
  options.echo_log = [&](const std::string& line) {
    last_logged = line;
    if (arguments.verbose) std::fprintf(stderr, "%s\n", line.c_str());
  };
  velmora::Servent servent(platform.platform(), std::move(options));
  if (servent.start() == velmora::Servent::Started::already_running) {
    throw std::runtime_error("a servent runs on profile " + paths.profile + " already");
  }
  // Without a screen nothing else can drive it; opening the socket is the last thing that it logs.
  if (!std::filesystem::is_socket(std::filesystem::path(paths.profile) / "control.sock")) {
    servent.shutdown();
    throw std::runtime_error(last_logged);
  }
  // Who starts the program can wait for this line: from here on the control socket answers.
  std::printf("velmorad %s runs on profile %s\n", VELMORA_VERSION, paths.profile.c_str());
  std::fflush(stdout);
  servent.on_ended = [&] { platform.loop().stop(); };
  platform.loop().on_signal([&] { servent.request_exit(); });
  platform.loop().run();
  servent.shutdown();
  return EXIT_SUCCESS;
}

// An unset variable in a script must not mean the usual profile, or all addresses.
CLI::Validator not_empty() {
  return {[](const std::string& text) { return text.empty() ? "is empty" : std::string(); }, ""};
}

}  // namespace

int main(int argc, char** argv) {
  Arguments arguments;
  CLI::App app{
      "velmorad - a servent for the Gnutella 0.4 network, without a screen.\n"
      "It runs in the foreground until SIGTERM, SIGINT or SIGHUP, or \"velmora-cli quit\".\n"
      "Drive it with velmora-cli on the same profile."};
  app.add_option("--profile", arguments.profile,
                 "Folder for everything this servent owns (settings, lists, logs, control socket)")
      ->check(not_empty())
      ->type_name("DIR");
  app.add_option("--listen", arguments.listen,
                 "Address for both listeners and all outgoing connections; all addresses if absent")
      ->check(not_empty())
      ->type_name("ADDRESS");
  app.add_option("--set", arguments.set,
                 "Set a field after the settings are loaded, for example port_config=6400; "
                 "may be given several times")
      ->type_name("CONTROL=VALUE")
      ->allow_extra_args(false);
  app.add_flag("--verbose", arguments.verbose, "Write every debug line to standard error");
  app.set_version_flag("--version", std::string("velmorad ") + VELMORA_VERSION);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? EXIT_SUCCESS : kWrongCommandLine;
  }
  try {
    return run(arguments);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "velmorad: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
