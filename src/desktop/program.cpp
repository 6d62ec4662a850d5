#include "desktop/program.h"

#include <QApplication>
#include <QSessionManager>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <utility>

#include "desktop/first_paint.h"
#include "ui/svg_image.h"
#include "ui/widgets/text.h"

namespace velmora::desktop {

Program::Program(ProgramArguments arguments, ProfilePaths paths, const char* version,
                 QElapsedTimer since_start)
    : arguments_(std::move(arguments)),
      paths_(std::move(paths)),
      version_(version),
      since_start_(since_start),
      platform_(paths_.profile, arguments_.listen),
      in_qt_(platform_.loop()),
      other_(QString::fromStdString(paths_.profile)),
      tray_(ui::program_icon()),
      programs_(QString::fromStdString(paths_.profile)) {
  platform_.loop().on_signal([this] { end_at_once(); });
  // The session may go on after all, so this is no end yet. When it does end, Qt's loop is told.
  connect(qApp, &QGuiApplication::commitDataRequest, this, [this](QSessionManager& session) {
    session.setRestartCommand(QCoreApplication::arguments());
    if (running_) servent_->save();
  });
}

Program::~Program() {
  boxes_.on_last_closed = nullptr;
  if (servent_) servent_->shutdown();
}

void Program::start() {
  // A window in front hides a message box, so the other program's window comes first.
  other_.raise_window([this] {
    try {
      start_servent();
    } catch (const std::exception& error) {
      fail(error.what());
    }
  });
}

void Program::start_servent() {
  const Platform machine = platform_.platform();
  servent_ =
      std::make_unique<Servent>(Platform{machine.loop, machine.network, machine.files, boxes_,
                                         tray_, programs_, machine.control, machine.dns,
                                         machine.random, machine.local_services, machine.folders},
                                options());
  name_window();
  tray_.attach(servent_->form());
  if (servent_->start() == Servent::Started::already_running) {
    std::fprintf(stderr, "velmora: a servent runs on profile %s already\n", paths_.profile.c_str());
    exit_status_ = EXIT_FAILURE;
    boxes_.on_last_closed = [this] { QCoreApplication::exit(exit_status_); };
    return;
  }
  running_ = true;
  servent_->on_ended = [this] { after_shutdown(); };
  open_window();
  // Who starts the program can wait for this line: from here on the control socket answers.
  std::printf("velmora %s runs on profile %s\n", version_, paths_.profile.c_str());
  std::fflush(stdout);
}

// Two profiles' windows, boxes and icons are told apart by their folders' names.
void Program::name_window() {
  if (arguments_.profile.empty()) return;
  std::filesystem::path folder(paths_.profile);
  if (!folder.has_filename()) folder = folder.parent_path();  // "two/"
  if (!folder.has_filename()) return;
  Window& window = servent_->form().frmMain;
  window.set_caption(window.caption() + " - " + folder.filename().string());
  QGuiApplication::setApplicationDisplayName(ui::form_text(window.caption()));
}

ServentOptions Program::options() const {
  ServentOptions options;
  options.version = version_;
  options.settings_path = paths_.settings;
  options.set = arguments_.set;
  if (arguments_.verbose) {
    options.echo_log = [](const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); };
  }
  return options;
}

void Program::open_window() {
  ui::MainWindowOptions options;
  options.tray_present = [] { return ui::QtTray::available(); };
  options.profile_folder = QString::fromStdString(paths_.profile);
  window_ = std::make_unique<ui::MainWindow>(*servent_, std::move(options));
  boxes_.set_parent_window(window_.get());
  if (!arguments_.minimized) {
    if (arguments_.verbose) new FirstPaint(*window_, since_start_);
    window_->show();
  } else if (ui::QtTray::available()) {
    servent_->form().frmMain.hide();
  } else {
    window_->showMinimized();
  }
}

// SIGTERM, SIGINT, SIGHUP.
void Program::end_at_once() {
  in_a_hurry_ = true;
  if (running_) {
    servent_->request_exit();
  } else {
    QCoreApplication::exit(exit_status_);
  }
}

// What could not be saved stays on the screen until somebody has read it.
void Program::after_shutdown() {
  running_ = false;
  window_->hide();
  boxes_.keep_only_critical();
  if (in_a_hurry_ || boxes_.open_count() == 0) {
    QCoreApplication::exit(exit_status_);
  } else {
    boxes_.on_last_closed = [this] { QCoreApplication::exit(exit_status_); };
  }
}

void Program::fail(const char* reason) {
  std::fprintf(stderr, "velmora: %s\n", reason);
  QCoreApplication::exit(EXIT_FAILURE);
}

}  // namespace velmora::desktop
