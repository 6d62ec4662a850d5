#include "desktop/uv_in_qt.h"

#include <QAbstractEventDispatcher>

namespace velmora::desktop {

UvInQt::UvInQt(uv::UvLoop& loop)
    : loop_(loop), ready_(loop.backend_descriptor(), QSocketNotifier::Read) {
  due_.setSingleShot(true);
  due_.setTimerType(Qt::PreciseTimer);
  connect(&ready_, &QSocketNotifier::activated, this, &UvInQt::turn);
  connect(&due_, &QTimer::timeout, this, &UvInQt::turn);
  connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
          &UvInQt::before_sleep);
  turn();
}

void UvInQt::turn() {
  if (turning_) {
    // A loop of Qt's inside a turn: the descriptor stays readable, so nobody looks until it is
    // over.
    ready_.setEnabled(false);
    return;
  }
  turning_ = true;
  loop_.turn_once();
  turning_ = false;
  ready_.setEnabled(true);
  sleep_no_longer_than_the_loop();
}

// Slots may have started timers, or asked for a turn, since the last one.
void UvInQt::before_sleep() {
  if (turning_) return;
  if (loop_.backend_timeout() == 0) {
    turn();
  } else {
    sleep_no_longer_than_the_loop();
  }
}

void UvInQt::sleep_no_longer_than_the_loop() {
  const int timeout_ms = loop_.backend_timeout();
  if (timeout_ms < 0) {
    due_.stop();
  } else {
    due_.start(timeout_ms);
  }
}

}  // namespace velmora::desktop
