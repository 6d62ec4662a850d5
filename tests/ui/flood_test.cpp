// The window under a flood: 2,000 query hits a second for ten seconds, a click every 100 ms.
#include <gtest/gtest.h>

#include <QToolButton>
#include <algorithm>
#include <ctime>
#include <iostream>

#include "query_hits.h"
#include "ui/widgets/option_buttons.h"
#include "window_rig.h"

namespace velmora::ui {
namespace {

constexpr int kHitsASecond = 2000;
constexpr int kSeconds = 10;
constexpr int kClickEveryMs = 100;
#ifdef __SANITIZE_ADDRESS__
constexpr double kMostMs = 500;
#else
constexpr double kMostMs = 100;
#endif
constexpr int kReadEveryMs = 10;  // what the network hands over at a time

// Processor time of this thread: what else the machine does makes no difference.
double used_ms() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

std::string hit(int number) {
  const auto size = static_cast<std::uint32_t>(number * 7919);
  const std::string serial = std::to_string(number);
  return sim::query_hit(1, {{1, size, "some song number " + serial + ".mp3"}}, "h" + serial);
}

TEST(Flood, ClicksAreAnsweredWithinATenthOfASecond) {
  WindowRig rig;
  auto peer = rig.servent_rig().connected_peer("10.0.0.2");
  auto& buttons = rig.widget<PageButtons>(rig.form().pgbut);
  int sent = 0;
  double worst_ms = 0;
  const double start = used_ms();
  for (int now = 0; now < kSeconds * 1000; now += kClickEveryMs) {
    const int page = now / kClickEveryMs * 3 % 7;  // all of them in turn
    // The click waits behind all that came since the last one.
    const double clicked = used_ms();
    for (int ms = 0; ms < kClickEveryMs; ms += kReadEveryMs) {
      std::string read;
      for (int i = 0; i < kHitsASecond * kReadEveryMs / 1000; ++i) read += hit(++sent);
      peer->send(read);
      rig.world().run_for(kReadEveryMs);
      QCoreApplication::processEvents();
    }
    QTest::mouseClick(buttons.button(page), Qt::LeftButton);
    QCoreApplication::processEvents();
    ASSERT_EQ(rig.form().pgbut.chosen(), page);
    rig.window().binding().flush();
    ASSERT_TRUE(rig.window().page(static_cast<Page>(page))->isVisible());
    rig.window().repaint();
    worst_ms = std::max(worst_ms, used_ms() - clicked);
  }
  const double all_ms = used_ms() - start;
  rig.settle(2000);
  EXPECT_EQ(rig.form().totalsearch.text(), std::to_string(kHitsASecond * kSeconds));
  EXPECT_EQ(rig.form().lfound.rows(), static_cast<std::size_t>(kHitsASecond * kSeconds));
  std::cout << "worst answer " << worst_ms << " ms; the ten seconds cost " << all_ms << " ms\n";
  EXPECT_LT(worst_ms, kMostMs);
}

}  // namespace
}  // namespace velmora::ui
