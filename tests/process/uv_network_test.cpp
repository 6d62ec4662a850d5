#include "platform/uv/uv_network.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "uv_rig.h"

namespace velmora::uv {
namespace {

using testing::ElementsAre;

class UvNetworkTest : public testing::Test {
 protected:
  // Connects the client to the port and gives the accepted end to the server.
  void join(End& client, End& server, Port& port) {
    const std::size_t before = port.accepted.size();
    client.socket = here.connect(port.address, port.number(), 0, client);
    ASSERT_TRUE(run_until(
        loop, [&] { return client.connects == 1 && port.accepted.size() == before + 1; }));
    server.hold(std::move(port.accepted.back()));
  }
  bool until(const std::function<bool()>& done) { return run_until(loop, done); }

  UvLoop loop;
  UvNetwork there{loop, "127.0.0.1"};
  UvNetwork here{loop, "127.0.0.2"};
};

TEST_F(UvNetworkTest, KnowsBothEnds) {
  Port port(there);
  End client;
  End server;
  join(client, server, port);
  EXPECT_EQ(there.local_address(), "127.0.0.1");
  EXPECT_EQ(client.socket->peer_address(), "127.0.0.1");
  EXPECT_EQ(client.socket->peer_port(), port.number());
  EXPECT_EQ(server.socket->peer_address(), "127.0.0.2");
  EXPECT_EQ(server.socket->peer_port(), client.socket->local_port());
  EXPECT_EQ(server.socket->local_port(), port.number());

  Port second(here);
  EXPECT_EQ(code_of([&] { here.listen(second.number(), 1, second); }), Errc::address_in_use);
  UvNetwork everywhere(loop, "");
  const Port wildcard(everywhere);
  EXPECT_NE(everywhere.local_address(), "0.0.0.0");
  EXPECT_THROW(UvNetwork(loop, "localhost"), PlatformError);
}

TEST_F(UvNetworkTest, WritesOfATurnArriveTogetherAndALoneOneAlone) {
  Port port(there);
  End client;
  End server;
  join(client, server, port);
  for (const char* piece : {"one ", "two ", "three"}) client.socket->write(piece);
  EXPECT_EQ(client.socket->unsent(), 13U);
  EXPECT_EQ(client.socket->unacknowledged(), 13U);
  ASSERT_TRUE(until([&] { return server.received().size() == 13; }));
  EXPECT_THAT(server.reads, ElementsAre("one two three"));
  EXPECT_TRUE(until([&] { return client.socket->unacknowledged() == 0; }));

  server.reads.clear();
  client.socket->write("before");
  client.socket->write_alone("HANDSHAKE");
  client.socket->write_alone("SECOND");
  client.socket->write("af");
  client.socket->write("ter");
  ASSERT_TRUE(until([&] { return server.received() == "beforeHANDSHAKESECONDafter"; }));
  EXPECT_THAT(server.reads, ElementsAre("before", "HANDSHAKE", "SECOND", "after"));
}

TEST_F(UvNetworkTest, APausedReaderGetsAllAtOnceAndContinuationsRunBehindPendingReads) {
  Port port(there);
  End clients[2];
  End servers[2];
  const std::string block(8'000, 'x');
  for (int i = 0; i < 2; ++i) {
    join(clients[i], servers[i], port);
    servers[i].socket->set_reading(false);
    for (int part = 0; part < 3; ++part) {
      clients[i].socket->write(block);
      ASSERT_TRUE(until([&] { return clients[i].socket->unacknowledged() == 0; }));
    }
  }
  run_turns(loop, 3);
  EXPECT_TRUE(servers[0].reads.empty());

  std::size_t reads_before_continuation = 0;
  bool posted = false;
  for (End& server : servers) {
    server.after_read = [&] {
      if (std::exchange(posted, true)) return;
      loop.post(
          [&] { reads_before_continuation = servers[0].reads.size() + servers[1].reads.size(); });
    };
    server.socket->set_reading(true);
  }
  ASSERT_TRUE(until([&] { return reads_before_continuation > 0; }));
  EXPECT_EQ(reads_before_continuation, 2U);
  EXPECT_EQ(servers[0].reads.front().size(), 3 * block.size());
}

TEST_F(UvNetworkTest, ASlowReaderMeetsTheLimitAndLosesNothing) {
  Port port(there);
  End client;
  End server;
  join(client, server, port);
  const std::string warm_up(200'000, 'x');  // a kernel queues more for a reader that was quick
  for (int i = 0; i < 50; ++i) {
    client.socket->write(warm_up);
    ASSERT_TRUE(until([&] { return client.socket->unacknowledged() == 0; }));
  }
  ASSERT_TRUE(until([&] { return server.received().size() == 50 * warm_up.size(); }));
  server.reads.clear();
  server.socket->set_reading(false);
  std::string sent;
  bool full = false;
  while (!full) {
    const std::string block(50'000, static_cast<char>('a' + sent.size() / 50'000 % 26));
    const std::size_t before = client.socket->unsent();
    try {
      client.socket->write(block);
      sent += block;
    } catch (const PlatformError& error) {
      EXPECT_EQ(error.code(), Errc::no_buffer_space);
      EXPECT_EQ(client.socket->unsent(), before);
      EXPECT_GT(before + block.size(), kMaxUnsentPerSocket);
      full = true;
    }
    ASSERT_LE(client.socket->unsent(), kMaxUnsentPerSocket);
    ASSERT_LT(sent.size(), std::size_t{256} << 20);
  }
  EXPECT_EQ(code_of([&] { client.socket->write(std::string(kMaxUnsentPerSocket + 1, 'x')); }),
            Errc::no_buffer_space);
  EXPECT_GT(client.socket->unacknowledged(), client.socket->unsent());
  ASSERT_TRUE(until([&] { return client.socket->unacknowledged() < sent.size(); }));
  const std::size_t arrived = sent.size() - client.socket->unacknowledged();
  RecordProperty("arrived", static_cast<int>(arrived));
  server.socket->set_reading(true);
  ASSERT_TRUE(until([&] { return client.socket->unacknowledged() == 0; }));
  ASSERT_TRUE(until([&] { return server.received().size() == sent.size(); }));
  EXPECT_GE(server.reads.front().size(), std::min(arrived, kMostReadAtOnce));
  EXPECT_TRUE(server.received() == sent);
  client.socket->write("more");
  EXPECT_TRUE(until([&] { return server.received().ends_with("more"); }));
}

TEST_F(UvNetworkTest, APeerThatTakesNothingIsGivenUpAndOneThatDoesIsNot) {
  constexpr int kStall_ms = 300;
  UvNetwork impatient(loop, "127.0.0.3", kStall_ms);
  Port port(impatient);
  End clients[2];
  End servers[2];
  for (int i = 0; i < 2; ++i) {
    join(clients[i], servers[i], port);
    servers[i].socket->write(std::string(kMaxUnsentPerSocket, 'x'));
  }
  clients[0].socket->set_reading(false);
  // Nothing more is sent to the other one than it takes, for much longer than the limit.
  ASSERT_TRUE(until([&] { return servers[0].disconnects == 1; }));
  EXPECT_EQ(impatient.unsent(), 0U) << "what waited for it is gone";
  EXPECT_EQ(servers[1].disconnects, 0);
  EXPECT_EQ(clients[1].received().size(), kMaxUnsentPerSocket);
  clients[1].reads.clear();
  servers[1].socket->write("more");
  EXPECT_TRUE(until([&] { return clients[1].received() == "more"; }));
}

TEST_F(UvNetworkTest, LastBytesArriveThoughThePeerStillSendsAndWasNotRead) {
  Port port(there);
  End client;
  End server;
  join(client, server, port);
  server.socket->set_reading(false);
  client.socket->write("never read");
  ASSERT_TRUE(until([&] { return client.socket->unacknowledged() == 0; }));

  const std::string last_words = std::string(900'000, 'w') + "END";
  server.socket->write_alone("alone");
  server.socket->write(last_words);
  server.socket.reset();
  EXPECT_TRUE(there.parting());
  ASSERT_TRUE(until([&] {
    if (client.socket->connected()) client.socket->write("and more ");
    return client.disconnects > 0;
  }));
  EXPECT_TRUE(client.received() == "alone" + last_words);
  EXPECT_EQ(client.disconnects, 1);
  EXPECT_EQ(client.reads.front(), "alone");
  EXPECT_EQ(code_of([&] { client.socket->write("x"); }), Errc::not_connected);
  EXPECT_TRUE(until([&] { return !there.parting() && !here.parting(); }));
  EXPECT_TRUE(server.reads.empty());
  EXPECT_EQ(server.disconnects, 0);
}

TEST_F(UvNetworkTest, AcceptedDataWaitsForEvents) {
  Port port(there);
  End client;
  client.socket = here.connect("127.0.0.1", port.number(), 0, client);
  ASSERT_TRUE(until([&] { return client.connects == 1 && port.accepted.size() == 1; }));
  client.socket->write("early");
  ASSERT_TRUE(until([&] { return client.socket->unacknowledged() == 0; }));
  client.socket.reset();
  run_turns(loop, 3);
  End server;
  server.hold(std::move(port.accepted.front()));
  EXPECT_TRUE(until([&] { return server.disconnects == 1; }));
  EXPECT_EQ(server.received(), "early");
}

TEST_F(UvNetworkTest, SocketAndListenerAreDestroyedInTheirOwnEvents) {
  Port port(there);
  port.after_accept = [&] { port.listener.reset(); };
  End client;
  End server;
  join(client, server, port);
  server.after_read = [&] { server.socket.reset(); };
  client.socket->write("go");
  ASSERT_TRUE(until([&] { return client.disconnects == 1; }));
  EXPECT_EQ(server.reads.size(), 1U);
}

TEST_F(UvNetworkTest, ConnectionsWaitInTheBacklogWhileAcceptingIsOff) {
  Port port(there);
  port.listener->set_accepting(false);
  End clients[3];
  for (End& client : clients) client.socket = here.connect("127.0.0.1", port.number(), 0, client);
  ASSERT_TRUE(until([&] {
    return std::all_of(std::begin(clients), std::end(clients),
                       [](const End& client) { return client.connects == 1; });
  }));
  run_turns(loop, 3);
  EXPECT_TRUE(port.accepted.empty());

  port.after_accept = [&] { port.listener->set_accepting(port.accepted.size() < 2); };
  port.listener->set_accepting(true);
  EXPECT_TRUE(port.accepted.empty());
  ASSERT_TRUE(until([&] { return port.accepted.size() == 2; }));
  run_turns(loop, 3);
  EXPECT_EQ(port.accepted.size(), 2U);
  port.listener->set_accepting(true);
  EXPECT_TRUE(until([&] { return port.accepted.size() == 3; }));
}

TEST_F(UvNetworkTest, AddressesThatNobodyCanHaveFailInTheNextTurn) {
  struct Case {
    std::string host;
    std::uint16_t port;
  };
  for (const Case& bad : {Case{"0.1.2.3", 80}, Case{"224.0.0.1", 80}, Case{"255.255.255.255", 80},
                          Case{"127.0.0.1", 0}, Case{"300.1.1.1", 80}, Case{"127.1", 80},
                          Case{"", 80}, Case{std::string("127.0.0.1\0x", 11), 80}}) {
    End client;
    client.socket = here.connect(bad.host, bad.port, 0, client);
    EXPECT_EQ(client.failures, 0) << bad.host;
    EXPECT_FALSE(client.socket->connected());
    EXPECT_EQ(code_of([&] { client.socket->write("x"); }), Errc::not_connected);
    const std::uint64_t turn = loop.turn();
    EXPECT_TRUE(until([&] { return client.failures == 1; })) << bad.host;
    EXPECT_LE(loop.turn(), turn + 1) << bad.host;
    EXPECT_EQ(client.connects, 0) << bad.host;
  }
}

TEST_F(UvNetworkTest, ARefusedConnectFailsOnce) {
  auto port = std::make_unique<Port>(there);
  const std::uint16_t number = port->number();
  port.reset();
  End client;
  client.socket = here.connect("127.0.0.1", number, 60'000, client);
  EXPECT_EQ(client.failures, 0);
  ASSERT_TRUE(until([&] { return client.failures > 0; }));
  run_turns(loop, 3);
  EXPECT_EQ(client.failures, 1);
  EXPECT_EQ(client.connects, 0);
}

// A full backlog leaves the packets of a further connect unanswered.
TEST_F(UvNetworkTest, AnUnansweredConnectTimesOut) {
  Port port(there, 0);
  port.listener->set_accepting(false);
  std::vector<std::unique_ptr<End>> clients;
  bool failed = false;
  while (!failed && clients.size() < 16) {
    End& client = *clients.emplace_back(std::make_unique<End>());
    const int timeout_ms = clients.size() == 1 ? 0 : 50;
    client.socket = here.connect("127.0.0.1", port.number(), timeout_ms, client);
    ASSERT_TRUE(until([&] { return client.connects + client.failures > 0; }));
    failed = client.failures == 1;
  }
  EXPECT_TRUE(failed);
  EXPECT_EQ(clients.front()->connects, 1);
}

TEST_F(UvNetworkTest, AnAbandonedConnectSaysNothing) {
  Port port(there);
  End clients[3];
  const char* hosts[] = {"127.0.0.1", "0.0.0.1", "localhost"};
  for (int i = 0; i < 3; ++i) {
    clients[i].socket = here.connect(hosts[i], port.number(), 1, clients[i]);
    clients[i].socket.reset();
  }
  End last;
  last.socket = here.connect("127.0.0.1", port.number(), 0, last);
  ASSERT_TRUE(until([&] { return last.connects == 1; }));
  run_turns(loop, 5);
  for (const End& client : clients) EXPECT_EQ(client.connects + client.failures, 0);
}

TEST_F(UvNetworkTest, NamesAreLookedUp) {
  Port port(there);
  End client;
  client.socket = here.connect("localhost", port.number(), 0, client);
  ASSERT_TRUE(until([&] { return client.connects + client.failures > 0; }));
  EXPECT_EQ(client.connects, 1);
  EXPECT_EQ(client.socket->peer_address(), "127.0.0.1");
}

TEST_F(UvNetworkTest, DescriptorsAreKeptBack) {
  const ResourceLimit limit(RLIMIT_NOFILE, 64 + 4);
  Port port(there);  // takes one; leaves three for accepted connections, and four on the other side
  End clients[4];
  for (End& client : clients) client.socket = here.connect("127.0.0.1", port.number(), 0, client);
  End excess;
  excess.socket = here.connect("127.0.0.1", port.number(), 0, excess);
  EXPECT_EQ(excess.failures, 0);
  ASSERT_TRUE(until([&] {
    return std::all_of(std::begin(clients), std::end(clients),
                       [](const End& client) { return client.connects == 1; });
  }));
  EXPECT_EQ(excess.failures, 1);
  ASSERT_TRUE(until([&] { return port.accepted.size() == 3; }));
  run_turns(loop, 3);
  EXPECT_EQ(port.accepted.size(), 3U);
  port.accepted.front().reset();
  clients[0].socket.reset();
  EXPECT_TRUE(until([&] { return port.accepted.size() == 4; }));
}

}  // namespace
}  // namespace velmora::uv
