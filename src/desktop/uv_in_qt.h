// Runs the engine's event loop inside Qt's, on the same thread and without polling: Qt watches what
// that loop waits for - its descriptor and its next timer - and looks at it before it goes to
// sleep, so that work begun by a click is under way at once. The loop is not owned and outlives
// this. A turn is never begun inside a turn. While the engine has work at hand, turns alternate
// with Qt's own events, so that neither waits long for the other.
#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include "platform/uv/uv_loop.h"

namespace velmora::desktop {

class UvInQt : public QObject {
 public:
  // Qt's event loop need not run yet, but its application exists.
  explicit UvInQt(uv::UvLoop& loop);

 private:
  void turn();
  void before_sleep();
  void sleep_no_longer_than_the_loop();

  uv::UvLoop& loop_;
  QSocketNotifier ready_;
  QTimer due_;
  bool turning_ = false;
};

}  // namespace velmora::desktop
