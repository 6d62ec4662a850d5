#include "desktop/application.h"

#include <QByteArray>
#include <QLocale>
#include <QStandardPaths>
#include <cstdio>
#include <cstdlib>

#include "ui/svg_image.h"

namespace velmora::desktop {
namespace {

// While the application is being made: Qt would explain at length and abort.
void on_message(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  if (type == QtFatalMsg) {
    std::fputs(
        "velmora: no display can be opened for the window; "
        "velmorad is the same servent without a screen\n",
        stderr);
    std::_Exit(EXIT_FAILURE);
  }
  const QByteArray category(context.category);
  if (category == "qt.qpa.xcb" || category == "qt.qpa.plugin") return;
  std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, text)));
}

// Under GLib's dispatcher Qt's timers wait while any descriptor is ready, so that a busy network
// would keep the lists from being drawn. Qt's own serves both in turn.
class WithoutGlib {
 public:
  WithoutGlib() : before_(qgetenv(kName)) { qputenv(kName, "1"); }
  ~WithoutGlib() {  // programs started from here decide for themselves
    if (before_.isEmpty()) {
      qunsetenv(kName);
    } else {
      qputenv(kName, before_);
    }
  }
  WithoutGlib(const WithoutGlib&) = delete;
  WithoutGlib& operator=(const WithoutGlib&) = delete;

 private:
  static constexpr char kName[] = "QT_NO_GLIB";
  QByteArray before_;
};

}  // namespace

std::unique_ptr<QApplication> make_application(int& argc, char** argv, const char* version) {
  QCoreApplication::setApplicationName("velmora");
  QCoreApplication::setApplicationVersion(version);
  QGuiApplication::setApplicationDisplayName("Velmora");
  QGuiApplication::setDesktopFileName("velmora");
  const QtMessageHandler before = qInstallMessageHandler(on_message);
  std::unique_ptr<QApplication> application;
  {
    const WithoutGlib without_glib;
    application = std::make_unique<QApplication>(argc, argv);
  }
  qInstallMessageHandler(before);
  QApplication::setQuitOnLastWindowClosed(false);  // it lives on in the notification area
  QApplication::setWindowIcon(ui::program_icon());
  if (auto translation = translation_into(QLocale::system().uiLanguages().value(0))) {
    translation->setParent(application.get());
    QCoreApplication::installTranslator(translation.release());
  }
  return application;
}

std::unique_ptr<QTranslator> translation_into(const QString& language) {
  const QString name = "velmora_" + QString(language).replace(u'-', u'_');
  auto translation = std::make_unique<QTranslator>();
  const QStringList folders = QStandardPaths::locateAll(
      QStandardPaths::GenericDataLocation, "velmora/translations", QStandardPaths::LocateDirectory);
  for (const QString& folder : folders) {
    if (translation->load(name, folder)) return translation;
  }
  return nullptr;
}

}  // namespace velmora::desktop
