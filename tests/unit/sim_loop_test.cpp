#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/error.h"
#include "platform/sim/sim_world.h"

namespace velmora::sim {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SimLoopTest : public ::testing::Test {
 protected:
  std::function<void()> note(const std::string& what) {
    return [this, what] { lines.push_back(std::to_string(world.now_us()) + " " + what); };
  }
  std::vector<std::string> take() { return std::exchange(lines, {}); }

  SimWorld world;
  SimHost& host = world.add_host("10.0.0.1");
  EventLoop& loop = host.platform().loop;
  std::vector<std::string> lines;
};

TEST_F(SimLoopTest, TimersTickAtMultiplesOfTheirInterval) {
  const auto timer = loop.make_timer(10, note("tick"));
  world.run_for(100);
  EXPECT_THAT(take(), IsEmpty());  // off when made
  timer->set_enabled(true);
  world.run_for(5);
  timer->set_enabled(true);  // changes nothing
  world.run_for(15);
  EXPECT_THAT(take(), ElementsAre("110000 tick", "120000 tick"));
  world.run_for(5);
  timer->set_interval(20);  // starts anew
  world.run_for(30);
  EXPECT_THAT(take(), ElementsAre("145000 tick"));
  timer->set_enabled(false);
  timer->set_interval(1);
  world.run_for(100);
  EXPECT_THAT(take(), IsEmpty());
  timer->set_interval(0);  // each turn
  timer->set_enabled(true);
  world.run_for(1);
  EXPECT_EQ(take().size(), 10U);
}

TEST_F(SimLoopTest, ATimerMayStopRestartOrEndInsideItsTick) {
  std::unique_ptr<Timer> timer;
  timer = loop.make_timer(10, [&] {
    note("once")();
    timer->set_enabled(false);
  });
  timer->set_enabled(true);
  world.run_for(100);
  EXPECT_THAT(take(), ElementsAre("10000 once"));
  timer = loop.make_timer(10, [&] {
    note("slower")();
    timer->set_interval(30);
  });
  timer->set_enabled(true);
  world.run_for(75);
  EXPECT_THAT(take(), ElementsAre("110000 slower", "140000 slower", "170000 slower"));
  const std::string long_enough_to_be_on_the_heap(100, 'x');
  timer = loop.make_timer(10, [&timer, this, long_enough_to_be_on_the_heap] {
    timer.reset();
    note(long_enough_to_be_on_the_heap.substr(0, 3))();
  });
  timer->set_enabled(true);
  world.run_for(100);
  EXPECT_THAT(take(), ElementsAre("185000 xxx"));
}

TEST_F(SimLoopTest, ContinuationsRunBehindWhatIsPending) {
  const auto first = loop.make_timer(10, [this] { loop.post(note("posted")); });
  const auto second = loop.make_timer(10, note("tick"));
  first->set_enabled(true);
  second->set_enabled(true);
  world.run_for(10);
  EXPECT_THAT(take(), ElementsAre("10000 tick", "10000 posted"));
}

TEST_F(SimLoopTest, AnEndlessContinuationDoesNotStopTheClock) {
  int turns = 0;
  std::function<void()> again = [&] {
    ++turns;
    loop.post(again);
  };
  loop.post(again);
  world.run_for(1);
  EXPECT_EQ(world.now_ms(), 1);
  EXPECT_GT(turns, 1000);
}

TEST_F(SimLoopTest, CivilTimeMovesWithTheClock) {
  world.set_local_time({2004, 2, 28, 23, 59, 59});
  world.run_for(999);
  EXPECT_EQ(loop.local_time(), (LocalTime{2004, 2, 28, 23, 59, 59}));
  world.run_for(1);
  EXPECT_EQ(loop.local_time(), (LocalTime{2004, 2, 29, 0, 0, 0}));
}

TEST_F(SimLoopTest, TheControlChannelAnswersItsClients) {
  struct Shouter : ControlChannelEvents {
    explicit Shouter(SimControl& channel) : control(channel) {}
    void on_client_line(std::uint64_t client, std::string_view line) override {
      control.send_line(client, std::string(line) + "!");
    }
    void on_client_gone(std::uint64_t client) override { gone.push_back(client); }
    SimControl& control;
    std::vector<std::uint64_t> gone;
  };
  SimControl& control = host.control();
  EXPECT_THROW(control.say("x"), PlatformError);
  Shouter events(control);
  control.open("control.sock", events);
  EXPECT_THAT(control.say("one"), ElementsAre("one!"));
  control.send_line(1, "notice");
  control.send_line(2, "to nobody");
  EXPECT_THAT(control.say("two"), ElementsAre("two!"));
  EXPECT_THAT(control.take(), ElementsAre("notice"));
  EXPECT_THAT(control.say("three", 2), ElementsAre("three!"));
  control.leave(2);
  EXPECT_THAT(control.say(std::string(kMaxControlLine + 1, 'x')), IsEmpty());
  EXPECT_THAT(events.gone, ElementsAre(2, 1));
  control.close();
  EXPECT_FALSE(control.is_open());
}

}  // namespace
}  // namespace velmora::sim
