#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/sim/sim_world.h"
#include "support/doubles.h"

namespace velmora::sim {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Hears all that happens to sockets, as "time_us event" lines.
class Watcher : public SocketEvents, public ListenerEvents {
 public:
  explicit Watcher(SimWorld& world) : world_(world) {}

  void on_connect() override { note("connect"); }
  void on_connect_failed() override { note("failed"); }
  void on_read(std::string_view data) override {
    bytes += data.size();
    note("read " + (data.size() > 40 ? std::to_string(data.size()) : std::string(data)));
  }
  void on_disconnect() override { note("disconnect"); }
  void on_accept(std::unique_ptr<Socket> pending) override {
    pending->set_events(this);
    sockets.push_back(std::move(pending));
    note("accept");
  }

  std::vector<std::string> take() { return std::exchange(lines, {}); }

  std::vector<std::string> lines;
  std::size_t bytes = 0;
  std::vector<std::unique_ptr<Socket>> sockets;
  std::string destroy_on;  // the event in which all sockets are destroyed

 private:
  void note(const std::string& event) {
    lines.push_back(std::to_string(world_.now_us()) + " " + event);
    if (event.starts_with(destroy_on) && !destroy_on.empty()) sockets.clear();
  }
  SimWorld& world_;
};

class SimNetworkTest : public ::testing::Test {
 protected:
  // A connection that stands on both ends; the clock shows 3 ms.
  void connect() {
    listener = b.network.listen(5634, 5, server);
    client.sockets.push_back(a.network.connect("10.0.0.2", 5634, 1000, client));
    world.run_for(3);
    client.take();
    server.take();
  }
  Socket& near() { return *client.sockets.at(0); }
  Socket& far() { return *server.sockets.at(0); }

  SimWorld world;
  Platform a = world.add_host("10.0.0.1").platform();
  Platform b = world.add_host("10.0.0.2").platform();
  Watcher client{world};
  Watcher server{world};
  std::unique_ptr<Listener> listener;
};

TEST_F(SimNetworkTest, AConnectionStandsAfterARoundTripAndIsAcceptedHalfOneLater) {
  listener = b.network.listen(5634, 5, server);
  EXPECT_EQ(b.network.local_address(), "10.0.0.2");
  world.add_name("host.example", "10.0.0.2");
  client.sockets.push_back(a.network.connect("host.example", 5634, 1000, client));
  EXPECT_FALSE(near().connected());
  EXPECT_EQ(code_of([this] { near().write("x"); }), Errc::not_connected);
  world.run_for(2000);
  EXPECT_THAT(client.lines, ElementsAre("2000 connect"));
  EXPECT_THAT(server.lines, ElementsAre("3000 accept"));
  EXPECT_TRUE(near().connected());
  EXPECT_EQ(near().peer_address(), "10.0.0.2");
  EXPECT_EQ(near().peer_port(), 5634);
  EXPECT_EQ(far().peer_address(), "10.0.0.1");
  EXPECT_EQ(far().peer_port(), near().local_port());
  EXPECT_EQ(far().local_port(), 5634);
}

TEST_F(SimNetworkTest, AConnectFailsOnceAtItsTime) {
  struct Case {
    const char* host;
    std::uint16_t port;
    int timeout_ms;
    const char* line;
  };
  const Case cases[] = {
      {"10.0.0.2", 1, 5000, "2000 failed"},         // nobody listens
      {"10.0.0.9", 5634, 5000, "5000000 failed"},   // nobody is there
      {"10.0.0.9", 5634, 0, "127000000 failed"},    // the kernel gives up
      {"10.0.0.2", 5634, 1, "1000 failed"},         // too slow
      {"0.1.2.3", 5634, 5000, "0 failed"},          // addresses nobody can have
      {"224.0.0.1", 5634, 5000, "0 failed"},        //
      {"255.255.255.255", 5634, 5000, "0 failed"},  //
      {"10.0.0.2", 0, 5000, "0 failed"},            //
      {"no.such.name", 5634, 5000, "0 failed"},     //
      {"10.0.0.256", 5634, 5000, "0 failed"},       //
      {"10.0.0.2.1", 5634, 5000, "0 failed"},       //
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.host) + ":" + std::to_string(c.port));
    SimWorld room;
    Watcher caller(room);
    Watcher listening(room);
    Platform from = room.add_host("10.0.0.1").platform();
    const auto port = room.add_host("10.0.0.2").platform().network.listen(5634, 5, listening);
    const auto socket = from.network.connect(c.host, c.port, c.timeout_ms, caller);
    EXPECT_THAT(caller.lines, IsEmpty());
    room.run_for(200'000);
    EXPECT_THAT(caller.lines, ElementsAre(c.line));
    EXPECT_THAT(listening.lines, IsEmpty());
  }
}

TEST_F(SimNetworkTest, WritesOfOneTurnArriveAsOneReadAndLoneOnesByThemselves) {
  connect();
  near().write("ab");
  near().write("cd");
  world.run_for(10);
  EXPECT_THAT(server.take(), ElementsAre("4000 read abcd"));
  a.loop.post([this] {
    near().write("1");
    near().write_alone("2");
    near().write("3");
    near().write("4");
    a.loop.post([this] { near().write("5"); });
    EXPECT_EQ(near().unsent(), 4U);
  });
  a.loop.post([this] {
    EXPECT_EQ(near().unsent(), 2U);  // "34" waits for the next turn behind the lone one
    near().write("x");
  });
  world.run_for(10);
  EXPECT_THAT(server.take(), ElementsAre("14000 read 1", "14000 read 2", "14000 read 34x5"));
}

TEST_F(SimNetworkTest, BytesAreAcknowledgedOneLatencyAfterTheyArrived) {
  connect();
  near().write("abc");
  EXPECT_EQ(near().unsent(), 3U);
  world.run_for(0);
  EXPECT_EQ(near().unsent(), 0U);
  EXPECT_EQ(near().unacknowledged(), 3U);
  world.run_for(1);
  EXPECT_EQ(server.bytes, 3U);
  EXPECT_EQ(near().unacknowledged(), 3U);
  world.run_for(1);
  EXPECT_EQ(near().unacknowledged(), 0U);
}

TEST_F(SimNetworkTest, APausedReaderStopsTheSenderAndThenGetsEverything) {
  world.conditions().receive_window = 1000;
  connect();
  far().set_reading(false);
  const std::size_t total = std::size_t{300} * 1024;
  near().write(std::string(total, 'x'));
  world.run_for(100);
  EXPECT_THAT(server.take(), IsEmpty());
  EXPECT_EQ(near().unacknowledged(), total - 1000);  // the window is full
  EXPECT_EQ(near().unsent(), total - 1000 - std::size_t{256} * 1024);
  far().set_reading(true);
  EXPECT_THAT(server.take(), IsEmpty());  // never inside the call
  world.run_for(0);
  EXPECT_THAT(server.take(), ElementsAre("103000 read 1000"));
  world.conditions().receive_window = std::size_t{256} * 1024;
  world.run_for(100);
  EXPECT_EQ(server.bytes, total);
  EXPECT_EQ(near().unacknowledged(), 0U);
}

TEST_F(SimNetworkTest, UnsentBytesAreLimitedPerSocketAndInAll) {
  world.conditions().receive_window = 0;
  connect();
  for (int i = 1; i < 65; ++i) {
    client.sockets.push_back(a.network.connect("10.0.0.2", 5634, 1000, client));
  }
  world.run_for(10);
  for (std::size_t i = 0; i < 64; ++i) {
    client.sockets[i]->write(std::string(kMaxUnsentPerSocket, 'x'));
  }
  Socket& last = *client.sockets[64];
  EXPECT_EQ(code_of([&] { last.write("y"); }), Errc::no_buffer_space);
  EXPECT_EQ(last.unsent(), 0U);
  world.run_for(1);  // the kernel has taken its share
  last.write("y");
  near().write(std::string(std::size_t{256} * 1024, 'z'));
  EXPECT_EQ(near().unsent(), kMaxUnsentPerSocket);
  EXPECT_EQ(code_of([this] { near().write("y"); }), Errc::no_buffer_space);
}

TEST_F(SimNetworkTest, AnOrderlyEndComesBehindTheData) {
  connect();
  near().write("last ");
  near().write("words");
  client.sockets.clear();
  world.run_for(10);
  EXPECT_THAT(server.take(), ElementsAre("4000 read last words", "4000 disconnect"));
  EXPECT_FALSE(far().connected());
  EXPECT_EQ(code_of([this] { far().write("x"); }), Errc::not_connected);
  EXPECT_THAT(client.take(), IsEmpty());
}

TEST_F(SimNetworkTest, APausedReaderHearsOfTheEndWhenItReadsOn) {
  connect();
  far().set_reading(false);
  near().write("data");
  client.sockets.clear();
  world.run_for(10);
  EXPECT_THAT(server.take(), IsEmpty());
  far().set_reading(true);
  world.run_for(10);
  EXPECT_THAT(server.take(), ElementsAre("13000 read data", "13000 disconnect"));
}

TEST_F(SimNetworkTest, AClosedSocketGivesUpOnAReaderThatNeverReads) {
  world.conditions().receive_window = 2;
  connect();
  far().set_reading(false);
  near().write("data");
  client.sockets.clear();
  world.run_for(6000);
  EXPECT_THAT(server.take(), ElementsAre("5004000 disconnect"));
}

TEST_F(SimNetworkTest, AResetDestroysWhatIsOnItsWay) {
  listener = b.network.listen(5634, 5, server);
  const auto raw = world.connect_raw("10.0.0.7", "10.0.0.2", 5634);
  raw->send("early");  // leaves when the connection stands
  world.run_for(3);
  EXPECT_TRUE(raw->connected());
  EXPECT_THAT(server.take(), ElementsAre("3000 accept", "3000 read early"));
  raw->send("lost");
  raw->reset();
  EXPECT_FALSE(raw->connected());
  world.run_for(10);
  EXPECT_THAT(server.take(), ElementsAre("4000 disconnect"));
}

TEST_F(SimNetworkTest, AListenerThatDoesNotAcceptKeepsConnectionsInItsBacklog) {
  listener = b.network.listen(5634, 2, server);
  listener->set_accepting(false);
  for (int i = 0; i < 3; ++i) {
    client.sockets.push_back(a.network.connect("10.0.0.2", 5634, 60'000, client));
  }
  world.run_for(10);
  EXPECT_THAT(client.take(), ElementsAre("2000 connect", "2000 connect"));
  near().write("hello");
  world.run_for(10);
  EXPECT_THAT(server.take(), IsEmpty());
  listener->set_accepting(true);
  world.run_for(2000);
  EXPECT_THAT(server.take(),
              ElementsAre("20000 accept", "20000 read hello", "20000 accept", "1004000 accept"));
  EXPECT_THAT(client.take(), ElementsAre("1003000 connect"));
}

TEST_F(SimNetworkTest, AListenerThatGoesResetsItsBacklog) {
  listener = b.network.listen(5634, 2, server);
  listener->set_accepting(false);
  client.sockets.push_back(a.network.connect("10.0.0.2", 5634, 1000, client));
  world.run_for(10);
  client.take();
  listener.reset();
  world.run_for(10);
  EXPECT_THAT(client.take(), ElementsAre("11000 disconnect"));
}

TEST_F(SimNetworkTest, ASocketMayBeDestroyedInsideAnyOfItsEvents) {
  for (const std::string event : {"connect", "failed", "read", "disconnect", "accept"}) {
    SCOPED_TRACE(event);
    SimWorld room;
    Watcher caller(room);
    Watcher listening(room);
    Platform from = room.add_host("10.0.0.1").platform();
    const auto port = room.add_host("10.0.0.2").platform().network.listen(5634, 5, listening);
    caller.destroy_on = event == "accept" ? "" : event;
    listening.destroy_on = event == "accept" ? event : "";
    caller.sockets.push_back(
        from.network.connect("10.0.0.2", event == "failed" ? 1 : 5634, 1000, caller));
    room.run_for(3);
    for (const auto& socket : listening.sockets) {
      if (!socket->connected()) continue;
      socket->write("first");
      socket->write_alone("second");
    }
    room.run_for(3);
    listening.sockets.clear();
    room.run_for(10'000);
    EXPECT_THAT(caller.lines.empty() ? "" : caller.lines.back(),
                ::testing::HasSubstr(event == "accept" ? "disconnect" : event));
  }
}

TEST_F(SimNetworkTest, AWireHasALimitedSpeedAndKeepsTheOrder) {
  connect();
  world.conditions().bandwidth = 100'000;
  near().write(std::string(1000, 'a'));
  world.run_for(0);
  near().write("b");
  world.run_for(1000);
  EXPECT_THAT(server.take(), ElementsAre("14000 read 1000", "14010 read b"));

  world.conditions().bandwidth = 0;
  world.conditions().jitter_us = 50'000;
  std::string sent;
  for (char c = 'a'; c <= 'z'; ++c) {
    near().write(std::string(1, c));
    sent += c;
    world.run_for(1);
  }
  world.run_for(1000);
  std::string came;
  for (const std::string& line : server.lines) came += line.back();
  EXPECT_EQ(came, sent);
}

TEST_F(SimNetworkTest, SegmentsAreCutJoinedAndLost) {
  connect();
  world.conditions().split_probability = 1;
  near().write("abcd");
  world.run_for(1);
  EXPECT_EQ(server.lines.size(), 2U);
  EXPECT_EQ(server.bytes, 4U);
  server.take();

  world.conditions().split_probability = 0;
  world.conditions().join_probability = 1;
  near().write("ab");
  world.run_for(5);
  EXPECT_THAT(server.take(), IsEmpty());
  world.conditions().join_probability = 0;
  near().write("cd");
  world.run_for(5);
  EXPECT_THAT(server.take(), ElementsAre("10000 read abcd"));

  world.conditions().join_probability = 1;
  near().write("alone");
  world.run_for(1000);  // nothing follows
  EXPECT_THAT(server.take(), ElementsAre("215000 read alone"));

  world.conditions().join_probability = 0;
  world.conditions().reset_probability = 1;
  near().write("lost");
  world.run_for(1000);
  EXPECT_THAT(server.take(), ElementsAre("1015000 disconnect"));
  EXPECT_THAT(client.take(), ElementsAre("1016000 disconnect"));
}

TEST_F(SimNetworkTest, SegmentsTrickleAndAPeerMayEndItsHalfOnly) {
  world.conditions().trickle_probability = 1;
  listener = b.network.listen(5634, 5, server);
  auto peer = world.connect_raw("10.0.0.1", "10.0.0.2", 5634);
  world.run_for(10);
  server.take();
  peer->send("abc");
  peer->end_sending();
  peer->send("never");
  world.run_for(10);
  EXPECT_THAT(server.take(),
              ElementsAre("11000 read a", "11000 read b", "11000 read c", "11000 disconnect"));
}

}  // namespace
}  // namespace velmora::sim
