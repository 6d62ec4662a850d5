#include "ui/svg_image.h"

#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPointer>
#include <QSvgRenderer>
#include <QWidget>

// The pictures lie in a static library, which the linker would take without them. The macro stands
// in no namespace.
static void take_images_in() {
  static const bool taken = [] {
    Q_INIT_RESOURCE(images);
    return true;
  }();
  Q_UNUSED(taken)
}

namespace velmora::ui {
namespace {

QByteArray source_of(const QString& name) {
  take_images_in();
  QFile file(QStringLiteral(":/velmora/%1.svg").arg(name));
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void render(QPainter& painter, const QRectF& place, const QByteArray& source) {
  QSvgRenderer renderer(source);
  renderer.setAspectRatioMode(Qt::KeepAspectRatio);
  renderer.render(&painter, place);
}

QPixmap rendered(const QByteArray& source, QSize size) {
  QPixmap pixmap(size);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  render(painter, QRectF(QPointF(), QSizeF(size)), source);
  return pixmap;
}

// Draws what is black in the file in the palette's colour for texts on buttons.
class DrawnIconEngine final : public QIconEngine {
 public:
  DrawnIconEngine(QByteArray source, const QWidget* on) : source_(std::move(source)), on_(on) {}

  void paint(QPainter* painter, const QRect& place, QIcon::Mode mode,
             QIcon::State /*state*/) override {
    render(*painter, place, recoloured(mode));
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State /*state*/) override {
    return rendered(recoloured(mode), size);
  }

  [[nodiscard]] QIconEngine* clone() const override { return new DrawnIconEngine(*this); }

 private:
  [[nodiscard]] QByteArray recoloured(QIcon::Mode mode) const {
    const QPalette palette = on_ ? on_->palette() : QGuiApplication::palette();
    const QColor colour =
        mode == QIcon::Selected
            ? palette.color(QPalette::HighlightedText)
            : palette.color(mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active,
                            QPalette::ButtonText);
    QByteArray text = source_;
    return text.replace("#000000", colour.name().toLatin1());
  }

  QByteArray source_;
  QPointer<const QWidget> on_;
};

}  // namespace

QIcon drawn_icon(const QString& name, const QWidget* on) {
  return QIcon(new DrawnIconEngine(source_of(name), on));
}

QIcon program_icon() {
  const QByteArray source = source_of(QStringLiteral("velmora"));
  QIcon icon;
  for (const int size : {16, 22, 24, 32, 48, 64, 128, 256}) {
    icon.addPixmap(rendered(source, QSize(size, size)));
  }
  return icon;
}

}  // namespace velmora::ui
