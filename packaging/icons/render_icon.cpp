// render_icon DRAWING.svg SIZE PICTURE.png: renders a square drawing at one size, while building.
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
  const int size = argc == 4 ? std::atoi(argv[2]) : 0;
  if (size < 1 || size > 4096) {
    std::fputs("usage: render_icon DRAWING.svg SIZE PICTURE.png\n", stderr);
    return 2;
  }
  QSvgRenderer drawing(QString::fromLocal8Bit(argv[1]));
  if (!drawing.isValid()) {
    std::fprintf(stderr, "render_icon: %s is no drawing\n", argv[1]);
    return EXIT_FAILURE;
  }
  QImage picture(size, size, QImage::Format_ARGB32_Premultiplied);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  drawing.render(&painter);
  painter.end();
  if (!picture.save(QString::fromLocal8Bit(argv[3]), "PNG")) {
    std::fprintf(stderr, "render_icon: cannot write %s\n", argv[3]);
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
