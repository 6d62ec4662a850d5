#include "platform/uv/uv_loop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <vector>

#include "uv_rig.h"

namespace velmora::uv {
namespace {

using testing::ElementsAre;

TEST(UvLoop, ContinuationsRunInOrderAndLaterOnesInALaterTurn) {
  UvLoop loop;
  std::vector<int> order;
  std::uint64_t first_turn = 0;
  loop.post([&] {
    order.push_back(1);
    first_turn = loop.turn();
    loop.post([&] {
      order.push_back(3);
      EXPECT_GT(loop.turn(), first_turn);
      loop.stop();
    });
  });
  loop.post([&] {
    order.push_back(2);
    EXPECT_EQ(loop.turn(), first_turn);
  });
  EXPECT_TRUE(order.empty());
  loop.run();
  EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST(UvLoop, SleepsWhenNothingIsPosted) {
  UvLoop loop;
  EXPECT_EQ(loop.backend_timeout(), 0);  // until it has turned once
  loop.turn_once();
  EXPECT_EQ(loop.backend_timeout(), -1);
  bool ran = false;
  loop.post([&] { ran = true; });
  EXPECT_EQ(loop.backend_timeout(), 0);
  loop.turn_once();
  EXPECT_TRUE(ran);
  EXPECT_EQ(loop.backend_timeout(), -1);
}

TEST(UvLoop, IntervalZeroTicksOnceATurnAndStopsInItsOwnTick) {
  UvLoop loop;
  std::vector<std::uint64_t> turns;
  std::unique_ptr<Timer> timer;
  timer = loop.make_timer(0, [&] {
    turns.push_back(loop.turn());
    if (turns.size() == 3) timer->set_enabled(false);
  });
  EXPECT_FALSE(timer->enabled());
  timer->set_enabled(true);
  ASSERT_TRUE(run_until(loop, [&] { return turns.size() == 3; }));
  EXPECT_THAT(turns, ElementsAre(turns[0], turns[0] + 1, turns[0] + 2));
  run_turns(loop, 3);
  EXPECT_EQ(turns.size(), 3U);
}

TEST(UvLoop, TimerIsDestroyedInItsOwnTick) {
  for (const int interval_ms : {0, 1}) {
    UvLoop loop;
    int ticks = 0;
    std::unique_ptr<Timer> timer;
    timer = loop.make_timer(interval_ms, [&] {
      timer.reset();
      ++ticks;
    });
    timer->set_enabled(true);
    ASSERT_TRUE(run_until(loop, [&] { return ticks > 0; }));
    run_turns(loop, 5);
    EXPECT_EQ(ticks, 1);
  }
}

TEST(UvLoop, TicksAreNeverEarlyAndAChangedIntervalStartsAnew) {
  UvLoop loop;
  int ticks = 0;
  const auto timer = loop.make_timer(60'000, [&] { ++ticks; });
  timer->set_enabled(true);
  const std::int64_t start_ms = loop.now_ms();
  timer->set_interval(3);
  ASSERT_TRUE(run_until(loop, [&] {
    EXPECT_LE(ticks * 3, loop.now_ms() - start_ms);
    return ticks == 5;
  }));
}

TEST(UvLoop, TimersOfOneIntervalTickInTheOrderOfTheirStarts) {
  UvLoop loop;
  std::vector<int> ticks;
  std::vector<std::unique_ptr<Timer>> timers;
  for (int i = 0; i < 4; ++i) {
    timers.push_back(loop.make_timer(10, [&, i] {
      ticks.push_back(i);
      timers[static_cast<std::size_t>(i)]->set_enabled(false);
    }));
  }
  for (const std::size_t i : {2U, 1U, 0U, 3U}) timers[i]->set_enabled(true);
  timers[1]->set_enabled(false);
  timers[1]->set_enabled(true);
  ASSERT_TRUE(run_until(loop, [&] { return ticks.size() == 4; }));
  EXPECT_THAT(ticks, ElementsAre(2, 0, 3, 1));
}

TEST(UvLoop, OneTickStopsAndDestroysTimersThatAreDueWithIt) {
  UvLoop loop;
  int ticks = 0;
  std::unique_ptr<Timer> stopped;
  std::unique_ptr<Timer> destroyed;
  const auto first = loop.make_timer(20, [&] {
    stopped->set_enabled(false);
    destroyed.reset();
  });
  const auto last = loop.make_timer(60, [&] { loop.stop(); });
  first->set_enabled(true);
  stopped = loop.make_timer(20, [&] { ++ticks; });
  destroyed = loop.make_timer(20, [&] { ++ticks; });
  for (Timer* timer : {stopped.get(), destroyed.get(), last.get()}) timer->set_enabled(true);
  loop.run();
  EXPECT_EQ(ticks, 0);
}

TEST(UvLoop, SignalsBecomeCalls) {
  UvLoop loop;
  int calls = 0;
  loop.on_signal([&] { ++calls; });
  int expected = 0;
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    std::raise(number);
    ++expected;
    EXPECT_TRUE(run_until(loop, [&] { return calls == expected; })) << number;
  }
  std::raise(SIGPIPE);  // ignored
}

}  // namespace
}  // namespace velmora::uv
