// The desktop program: the servent on the real machine with a window, a tray icon and message boxes
// around it, from the start on a profile to the ordered end. It owns all of them. Everything
// happens in Qt's event loop, which the caller runs. It is not the window.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <functional>
#include <memory>

#include "app/profile_paths.h"
#include "app/program_arguments.h"
#include "app/servent.h"
#include "desktop/running_servent.h"
#include "desktop/uv_in_qt.h"
#include "platform/uv/uv_platform.h"
#include "ui/main_window.h"
#include "ui/qt_message_boxes.h"
#include "ui/qt_programs.h"
#include "ui/qt_tray.h"

namespace velmora::desktop {

class Program : public QObject {
 public:
  // The folders of the paths exist. Raises a PlatformError, for example for a wrong address.
  Program(ProgramArguments arguments, ProfilePaths paths, const char* version,
          QElapsedTimer since_start);
  ~Program() override;  // runs the ordered shutdown if it has not run

  // To be called in the event loop; the loop's exit status tells how it went.
  void start();

 private:
  void start_servent();
  void name_window();
  [[nodiscard]] ServentOptions options() const;
  void open_window();
  void end_at_once();
  void after_shutdown();
  static void fail(const char* reason);

  ProgramArguments arguments_;
  ProfilePaths paths_;
  const char* version_;
  QElapsedTimer since_start_;
  uv::UvPlatform platform_;
  UvInQt in_qt_;
  RunningServent other_;
  ui::QtMessageBoxes boxes_;
  ui::QtTray tray_;
  ui::QtPrograms programs_;
  std::unique_ptr<Servent> servent_;
  std::unique_ptr<ui::MainWindow> window_;
  int exit_status_ = 0;
  bool running_ = false;
  bool in_a_hurry_ = false;  // nobody is there to read what is shown at the end
};

}  // namespace velmora::desktop
