// The servent that may run on a profile already, as a second start sees it: it can be asked to
// bring its window to the front, over its control socket. It never blocks and never waits long. It
// does not find out whether the profile is in use: the profile's lock does.
#pragma once

#include <QLocalSocket>
#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>

namespace velmora::desktop {

class RunningServent : public QObject {
 public:
  explicit RunningServent(QString profile_folder, int patience_ms = 1000);

  // Calls back once: inside the call when nobody listens there, else after the answer, or when
  // patience is at its end.
  void raise_window(std::function<void()> then);

 private:
  void ask();
  void finish();

  QString profile_folder_;
  QLocalSocket socket_;
  QTimer patience_;
  std::function<void()> then_;
};

}  // namespace velmora::desktop
