// The engine's real loop inside Qt's: what is begun anywhere is under way at once, nobody polls,
// and neither loop starves the other. A step that is not watched would wait for ever, up to the
// deadline.
#include "desktop/uv_in_qt.h"

#include <gtest/gtest.h>

#include <QAbstractEventDispatcher>
#include <QEventLoop>
#include <QTimer>

#include "process/uv_rig.h"

namespace velmora::desktop {
namespace {

struct Rig {
  // Qt sleeps here as it does in the program, and looks at the condition every millisecond.
  static bool until(const std::function<bool()>& done) {
    QEventLoop waiting;
    QTimer look, deadline;
    QObject::connect(&look, &QTimer::timeout, [&] {
      if (done()) waiting.exit(1);
    });
    QObject::connect(&deadline, &QTimer::timeout, &waiting, &QEventLoop::quit);
    look.start(1);
    deadline.start(uv::kDeadlineMs);
    return waiting.exec() == 1;
  }

  uv::UvLoop loop;
  UvInQt in_qt{loop};
  uv::UvNetwork network{loop, "127.0.0.1"};
};

// Listening, connecting, accepting, reading and writing, the first two begun in a slot, each of the
// others inside the event of the one before.
TEST(UvInQt, WatchesWhatSlotsAndEventsBegin) {
  Rig rig;
  std::unique_ptr<uv::Port> port;
  uv::End here, there;
  there.after_read = [&] { there.socket->write("pong"); };
  QTimer::singleShot(0, [&] {
    port = std::make_unique<uv::Port>(rig.network);
    port->after_accept = [&] { there.hold(std::move(port->accepted[0])); };
    here.hold(rig.network.connect("127.0.0.1", port->number(), 5000, here));
  });
  ASSERT_TRUE(rig.until([&] { return here.connects == 1; }));
  QTimer::singleShot(0, [&] { here.socket->write("ping"); });
  ASSERT_TRUE(rig.until([&] { return here.received() == "pong"; }));
  EXPECT_EQ(there.received(), "ping");
}

TEST(UvInQt, SleepsBetweenTicks) {
  Rig rig;
  int ticks = 0;
  const auto timer = rig.loop.make_timer(10, [&] { ++ticks; });
  QEventLoop waiting;
  const auto stop = rig.loop.make_timer(210, [&] { waiting.quit(); });
  timer->set_enabled(true);
  stop->set_enabled(true);
  int wakings = 0;
  const QMetaObject::Connection counting = QObject::connect(
      QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, [&] { ++wakings; });
  waiting.exec();
  QObject::disconnect(counting);
  EXPECT_GT(ticks, 0);
  EXPECT_LE(wakings, 3 * ticks + 10);
}

// A click among a flood: work that never ends on the engine's side, timers and events on Qt's.
TEST(UvInQt, SharesTheThreadWithQt) {
  Rig rig;
  int turns = 0, qt_ticks = 0, qt_events = 0;
  const auto flood = rig.loop.make_timer(0, [&] { ++turns; });
  flood->set_enabled(true);
  QTimer qt_timer;
  QObject::connect(&qt_timer, &QTimer::timeout, [&] {
    ++qt_ticks;
    QMetaObject::invokeMethod(
        &qt_timer, [&] { ++qt_events; }, Qt::QueuedConnection);
  });
  qt_timer.start(1);
  ASSERT_TRUE(rig.until([&] { return qt_ticks >= 20 && qt_events >= 20 && turns >= 20; }));
}

TEST(UvInQt, NeverTurnsInsideATurn) {
  Rig rig;
  bool inside = false;
  int posted = 0, nested = 0;
  rig.loop.post([&] {
    inside = true;
    rig.loop.post([&] {
      EXPECT_FALSE(inside);
      ++posted;
    });
    QEventLoop loop;
    QTimer::singleShot(20, &loop, &QEventLoop::quit);
    loop.exec();
    ++nested;
    inside = false;
  });
  ASSERT_TRUE(rig.until([&] { return posted == 1; }));
  EXPECT_EQ(nested, 1);
}

}  // namespace
}  // namespace velmora::desktop
