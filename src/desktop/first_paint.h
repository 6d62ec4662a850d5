// Says on standard error how long a window took from the start of the program until it was first
// painted, once. For people who ask for it with --verbose; it watches and changes nothing.
#pragma once

#include <QElapsedTimer>
#include <QObject>

class QWidget;

namespace velmora::desktop {

class FirstPaint : public QObject {
 public:
  // Becomes a child of the window; `since_start` runs since the program began.
  FirstPaint(QWidget& window, QElapsedTimer since_start);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QElapsedTimer since_start_;
};

}  // namespace velmora::desktop
