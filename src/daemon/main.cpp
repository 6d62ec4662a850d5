// velmorad: the servent without a screen.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>

#include "app/profile_paths.h"
#include "app/program_arguments.h"
#include "app/servent.h"
#include "platform/uv/uv_platform.h"

namespace {

int run(const velmora::ProgramArguments& arguments) {
  const velmora::ProfilePaths paths = velmora::profile_paths(arguments.profile);
  velmora::uv::UvPlatform::make_folder(std::filesystem::path(paths.settings).parent_path());
  velmora::uv::UvPlatform::make_folder(paths.profile);
  velmora::uv::UvPlatform platform(paths.profile, arguments.listen);
  velmora::ServentOptions options;
  options.version = VELMORA_VERSION;
  options.settings_path = paths.settings;
  options.set = arguments.set;
  std::string last_logged;
  options.echo_log = [&](const std::string& line) {
    last_logged = line;
    if (arguments.verbose) std::fprintf(stderr, "%s\n", line.c_str());
  };
  velmora::Servent servent(platform.platform(), std::move(options));
  servent.form().frmMain.set_enabled(false);  // there is none
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

}  // namespace

int main(int argc, char** argv) {
  velmora::ProgramArguments arguments;
  const velmora::ProgramText text{
      "velmorad", VELMORA_VERSION,
      "velmorad - a servent for the Gnutella 0.4 network, without a screen.\n"
      "It runs in the foreground until SIGTERM, SIGINT or SIGHUP, or \"velmora-cli quit\".\n"
      "Drive it with velmora-cli on the same profile."};
  if (const auto status = velmora::read_program_arguments(argc, argv, text, arguments)) {
    return *status;
  }
  try {
    return run(arguments);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "velmorad: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
