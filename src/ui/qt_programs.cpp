#include "ui/qt_programs.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QUrl>
#include <utility>

#include "platform/error.h"

namespace velmora::ui {

QtPrograms::QtPrograms(QString profile_folder) : profile_folder_(std::move(profile_folder)) {}

// Desktops start their opener for a missing file as well, and its complaint may come nowhere.
void QtPrograms::open_text_file(const std::string& path) {
  const QString file = QDir(profile_folder_).absoluteFilePath(QFile::decodeName(path.c_str()));
  if (!QFile::exists(file)) throw PlatformError(Errc::path_not_found);
  if (!QDesktopServices::openUrl(QUrl::fromLocalFile(file))) {
    throw PlatformError(Errc::system, "The desktop knows no program for text files");
  }
}

}  // namespace velmora::ui
