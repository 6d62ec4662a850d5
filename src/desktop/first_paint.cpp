#include "desktop/first_paint.h"

#include <QEvent>
#include <QTimer>
#include <QWidget>
#include <cstdio>

namespace velmora::desktop {

FirstPaint::FirstPaint(QWidget& window, QElapsedTimer since_start)
    : QObject(&window), since_start_(since_start) {
  window.installEventFilter(this);
}

bool FirstPaint::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Paint) {
    watched->removeEventFilter(this);
    // The window's own paint event comes first, those of its controls in the same go.
    QTimer::singleShot(0, this, [this] {
      std::fprintf(stderr, "window painted %lld ms after the start\n",
                   static_cast<long long>(since_start_.elapsed()));
    });
  }
  return false;
}

}  // namespace velmora::desktop
