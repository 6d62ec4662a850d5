// velmora: the servent with its window.
#include <QElapsedTimer>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>

#include "app/profile_paths.h"
#include "app/program_arguments.h"
#include "desktop/application.h"
#include "desktop/program.h"

int main(int argc, char** argv) {
  QElapsedTimer since_start;
  since_start.start();
  velmora::ProgramArguments arguments;
  const velmora::ProgramText text{
      "velmora", VELMORA_VERSION,
      "velmora - a servent for the Gnutella 0.4 network, with a window.\n"
      "Closing the window leaves it running; \"Exit\" in the menu of its tray icon, SIGTERM, "
      "SIGINT\n"
      "or SIGHUP end it. velmora-cli drives it, too; velmorad is the same without a screen.",
      true};
  if (const auto status = velmora::read_program_arguments(argc, argv, text, arguments)) {
    return *status;
  }
  const auto application = velmora::desktop::make_application(argc, argv, VELMORA_VERSION);
  try {
    const velmora::ProfilePaths paths = velmora::profile_paths(arguments.profile);
    velmora::uv::UvPlatform::make_folder(std::filesystem::path(paths.settings).parent_path());
    velmora::uv::UvPlatform::make_folder(paths.profile);
    velmora::desktop::Program program(arguments, paths, VELMORA_VERSION, since_start);
    QMetaObject::invokeMethod(&program, &velmora::desktop::Program::start, Qt::QueuedConnection);
    return QApplication::exec();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "velmora: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
