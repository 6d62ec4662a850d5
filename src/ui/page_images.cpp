#include "ui/page_images.h"

#include <QAbstractButton>
#include <QFileInfo>
#include <QImageReader>

#include "ui/svg_image.h"

namespace velmora::ui {
namespace {

constexpr qint64 kMostBytes = qint64{1024} * 1024;
constexpr int kMostPixels = 1024;  // along each side

// Only the GIF decoder is asked, and only for an image of which the header promises a sane size.
QImage read_image(const QString& path) {
  const QFileInfo file(path);
  if (!file.isFile() || file.size() > kMostBytes) return {};
  QImageReader reader(path, "gif");
  reader.setAutoDetectImageFormat(false);
  const QSize size = reader.size();
  if (size.isEmpty() || size.width() > kMostPixels || size.height() > kMostPixels) return {};
  return reader.read();
}

}  // namespace

void set_built_in_images(const QList<QAbstractButton*>& buttons) {
  for (int page = 0; page < buttons.size(); ++page) {
    buttons[page]->setIcon(drawn_icon(QStringLiteral("page%1").arg(page), buttons[page]));
  }
}

int load_button_images(const QString& folder, const QList<QAbstractButton*>& buttons) {
  int taken = 0;
  for (int number = 1; number <= buttons.size(); ++number) {
    const QImage image = read_image(QStringLiteral("%1/button%2.gif").arg(folder).arg(number));
    if (image.isNull()) continue;
    buttons[number - 1]->setIcon(QIcon(QPixmap::fromImage(image)));
    ++taken;
  }
  return taken;
}

}  // namespace velmora::ui
