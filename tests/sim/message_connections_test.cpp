#include <gmock/gmock.h>

#include "late_machine.h"
#include "net/message_connections.h"
#include "servent_rig.h"

namespace velmora::sim {
namespace {

// Latency is 1 ms each way. A peer that connects at t is accepted at t + 1 ms (the handshake of the
// transport's own is part of it), and the servent's timers for it run from there.
std::int64_t accepted_at(ServentRig& rig, std::size_t row) {
  EXPECT_TRUE(rig.world.run_until([&] { return rig.form().lHosts.rows() >= row; }, 1000));
  return rig.world.now_us();
}

std::int64_t time_of_status(ServentRig& rig, std::size_t row, const std::string& status) {
  EXPECT_TRUE(rig.world.run_until([&] { return rig.host_status(row) == status; }, 60000)) << status;
  return rig.world.now_us();
}

TEST(MessageConnections, IgnoresEveryOtherHandshake) {
  const std::vector<std::vector<std::string>> openings = {
      {"GNUTELLA CONNECT/0.4\r\n\r\n"},
      {"GNUTELLA CONNECT/0.4\n"},
      {"GNUTELLA CONNECT/0.4\n\n" + descriptor("a", 0, 1, 0, "")},
      {"GNUTELLA CONN", "ECT/0.4\n\n"},
      {"GNUTELLA CONNECT/0.6\n\n"},
      {""},
  };
  for (const auto& opening : openings) {
    ServentRig rig;
    auto peer = rig.world.connect_raw("10.0.0.2", "10.0.0.1", 6346);
    const std::int64_t start = accepted_at(rig, 1);
    EXPECT_EQ(rig.host_status(1), "accepting");
    for (const std::string& piece : opening) {
      rig.world.run_for(2);
      if (!piece.empty()) peer->send(piece);
    }
    rig.world.run_for(10);
    EXPECT_EQ(peer->received().find("GNUTELLA OK"), std::string::npos) << opening[0];
    // Bytes that count as data start the wait anew; only a peer that says nothing is exact here.
    const std::int64_t refused = time_of_status(rig, 1, "Not accepted");
    if (opening[0].empty()) {
      EXPECT_EQ(refused - start, 5'000'000);
    }
    EXPECT_EQ(time_of_status(rig, 1, "Sock freed") - refused, 5'000'000);
    EXPECT_TRUE(rig.world.run_until([&] { return peer->closed_by_peer(); }, 100));
  }
}

TEST(MessageConnections, DropsASilentPeerAtItsFifthTick) {
  ServentRig rig;
  auto peer = rig.connected_peer("10.0.0.2");
  const std::int64_t first = time_of_status(rig, 1, "Waiting..1");
  EXPECT_EQ(time_of_status(rig, 1, "Waiting..4") - first, 15'000'000);
  const std::int64_t dropped = time_of_status(rig, 1, "No Data, Disconnecting");
  EXPECT_EQ(dropped - first, 20'000'000);
  EXPECT_FALSE(peer->closed_by_peer());
  EXPECT_EQ(time_of_status(rig, 1, "Sock freed") - dropped, 5'000'000);
  rig.world.run_for(2);
  EXPECT_TRUE(peer->closed_by_peer());
}

// The count that the limit is tested against is that of the last list refresh.
TEST(MessageConnections, ABurstPassesTheInboundLimit) {
  ServentRig rig(ServentRig::Fields{{"max_in_host", "1"}});
  rig.world.run_for(600);
  auto first = rig.connected_peer("10.0.0.2");
  auto second = rig.connected_peer("10.0.0.3");
  EXPECT_EQ(rig.host_status(2), "Connected");
  rig.world.run_for(500);
  auto third = rig.world.connect_raw("10.0.0.4", "10.0.0.1", 6346);
  rig.world.run_for(10);
  EXPECT_EQ(rig.host_status(3), "Sock freed");
}

// A byte now and then keeps the wait for the handshake from ending. Few such peers are nobody's
// trouble; 200 of them would keep everybody else out for ever.
TEST(MessageConnections, PeersThatDawdleAreInTheWayForSecondsOnly) {
  ServentRig rig(ServentRig::Fields{{"max_in_host", "1000"}});
  std::vector<std::unique_ptr<RawPeer>> dawdlers;
  const auto dawdle = [&](int seconds) {
    for (int i = 0; i < seconds; ++i) {
      for (const auto& dawdler : dawdlers) dawdler->send("x");
      rig.world.run_for(1000);
    }
  };
  while (dawdlers.size() < kMaxOpening - 1) {
    dawdlers.push_back(rig.world.connect_raw("10.0.0.2", "10.0.0.1", 6346));
  }
  dawdle(30);
  EXPECT_EQ(rig.host_status(1), "Connected") << "it sent data, so its status says so";
  EXPECT_EQ(rig.logged("Connected IN"), 0);
  dawdlers.push_back(rig.world.connect_raw("10.0.0.2", "10.0.0.1", 6346));
  auto late = rig.world.connect_raw("10.0.0.3", "10.0.0.1", 6346);
  late->send(kHello);
  rig.world.run_for(200);
  EXPECT_EQ(late->received(), "") << "200 are opening";
  rig.form().port_config.enter("7000");
  auto later = rig.world.connect_raw("10.0.0.4", "10.0.0.1", 7000);
  later->send(kHello);
  rig.world.run_for(200);
  EXPECT_EQ(later->received(), "") << "the next listener accepts no more than the last one";
  dawdle(2);
  EXPECT_EQ(later->received(), kWelcome);
  EXPECT_TRUE(dawdlers.front()->closed_by_peer());
  EXPECT_FALSE(dawdlers.back()->closed_by_peer()) << "the newest one has had no time yet";
}

TEST(MessageConnections, ConnectsOut) {
  ServentRig rig;
  RawPeer* peer = nullptr;
  rig.world.listen_raw("10.0.0.2", 7000, [&](RawPeer& accepted) { peer = &accepted; });
  rig.form().new_host.enter("10.0.0.2:7000");
  EXPECT_EQ(rig.status_bar(), "");
  EXPECT_EQ(rig.host_status(1), "Requesting to Connect");
  ASSERT_TRUE(rig.world.run_until([&] { return peer && !peer->received().empty(); }, 1000));
  EXPECT_EQ(peer->received(), kHello);
  rig.form().new_host.enter("10.0.0.2");
  EXPECT_EQ(rig.status_bar(), "Already connected to this host.");
  peer->send(kWelcome);
  rig.world.run_for(2);
  EXPECT_EQ(rig.host_status(1), "Connected");
  EXPECT_EQ(rig.form().lHosts.cell(1, 1), "10.0.0.2:7000");
  EXPECT_EQ(rig.form().lHosts.cell(1, 2), "Out");
  EXPECT_EQ(rig.logged("Connected OUT to: 10.0.0.2 on port: 7000"), 1);

  rig.form().lHosts.activate(1);
  EXPECT_EQ(rig.host_status(1), "Disconnecting");
  rig.world.run_for(2);
  EXPECT_TRUE(peer->closed_by_peer());
  rig.world.run_for(4998);
  EXPECT_EQ(rig.host_status(1), "Sock freed");
}

TEST(MessageConnections, ReportsHostsThatDoNotAnswer) {
  struct Case {
    const char* typed;
    std::int64_t after_us;
  };
  // Nobody listens: refused after a round trip. Nobody there: the time-out of the connect.
  for (const Case& c : {Case{"10.0.0.2:7000", 2'000}, Case{"10.9.9.9:7000", 4'000'000}}) {
    ServentRig rig;
    const std::int64_t start = rig.world.now_us();
    rig.form().new_host.enter(c.typed);
    const std::int64_t failed = time_of_status(rig, 1, "No response");
    EXPECT_EQ(failed - start, c.after_us) << c.typed;
    EXPECT_EQ(rig.logged("Time-out on sock: 1"), 1);
    EXPECT_EQ(time_of_status(rig, 1, "Sock freed") - failed, 5'000'000);
  }
}

TEST(MessageConnections, AClosedPeerIsFreedLaterAndItsSlotUsedAgain) {
  ServentRig rig(ServentRig::Fields{{"max_in_host", "20"}});
  auto first = rig.connected_peer("10.0.0.2");
  auto second = rig.connected_peer("10.0.0.3");
  first->close();
  time_of_status(rig, 1, "Disconnected");
  auto third = rig.connected_peer("10.0.0.4");
  EXPECT_EQ(rig.form().lHosts.rows(), 3U);
  time_of_status(rig, 1, "Sock freed");
  second->send(descriptor("a", 64, 1, 0, ""));
  third->send(descriptor("a", 64, 1, 0, ""));
  auto fourth = rig.connected_peer("10.0.0.2");
  EXPECT_EQ(rig.host_status(1), "Connected");
  EXPECT_EQ(rig.form().lHosts.rows(), 3U);
}

// While the rest of a large chunk waits for its turns, a person can still end the connection, and
// nothing of the rest is handled.
TEST(MessageConnections, HandlesALargeChunkInSlices) {
  constexpr int kAll = 3 * kDescriptorsPerTurn + 8;
  const std::string first = std::to_string(kDescriptorsPerTurn);
  std::string chunk;
  for (int i = 0; i < kAll; ++i) chunk += descriptor(std::to_string(i), 0, 1, 0, "");
  for (const bool ended : {false, true}) {
    ServentRig rig;
    auto peer = rig.connected_peer("10.0.0.2");
    peer->send(chunk);
    ASSERT_TRUE(
        rig.world.run_until([&] { return rig.host_counts(1) == "0/" + first + "/0"; }, 100));
    if (ended) rig.form().lHosts.activate(1);
    rig.world.run_for(1000);
    const std::string handled = ended ? first : std::to_string(kAll);
    EXPECT_EQ(rig.host_counts(1), "0/" + handled + "/0");
    EXPECT_EQ(rig.form().ping_stat.text(), handled + " / 0");
  }
}

// Two neighbours flood at once: neither's chunk makes the other's wait to its end, nothing is lost.
TEST(MessageConnections, ManyChunksShareATurn) {
  SimWorld world;
  SimHost& host = world.add_host("10.0.0.1");
  world.add_host("10.0.0.2");
  LateMachine machine(host.platform());
  machine.ms_a_look = 1;
  Servent servent(machine.platform(), {});
  servent.start();
  std::vector<std::unique_ptr<RawPeer>> peers;
  for (int i = 0; i < 2; ++i) {
    peers.push_back(world.connect_raw("10.0.0.2", "10.0.0.1", 6346));
    world.run_for(5);
    peers.back()->send(kHello);
    world.run_for(5);
  }
  std::string chunk;
  for (int i = 0; i < 300; ++i) chunk += descriptor(std::to_string(i), 64, 1, 0, "");
  for (const auto& peer : peers) peer->send(chunk);
  const auto received = [&](std::size_t row) {
    const std::string counts = servent.form().lHosts.cell(row, 3);
    return std::stoi(counts.substr(counts.find('/') + 1));
  };
  int widest = 0;
  ASSERT_TRUE(world.run_until(
      [&] {
        widest = std::max(widest, std::abs(received(1) - received(2)));
        return received(1) == 300 && received(2) == 300;
      },
      1000));
  EXPECT_GT(widest, 0);
  EXPECT_LE(widest, 2 * kDescriptorsPerTurn);
  peers[0]->send("a short one");
  world.run_for(10);
  EXPECT_NE(servent.form().frmDebug.text().find("data < 23 bytes"), std::string::npos);
}

TEST(Listeners, RefuseEqualPorts) {
  ServentRig rig({{"port_config", "7000"}, {"upport_config", "7000"}});
  EXPECT_EQ(rig.status_bar(), "Cannot use the same port for messages and uploading!");
  auto peer = rig.world.connect_raw("10.0.0.2", "10.0.0.1", 7000);
  rig.world.run_for(100);
  EXPECT_FALSE(peer->connected());
}

// A stored number beyond every range must not keep the program from starting, or a typed one end
// it.
TEST(Listeners, ReadHugeNumbersWithoutAnError) {
  ServentRig rig({{"port_config", "1e999"}, {"max_in_host", "1e999"}});
  ASSERT_EQ(rig.started, Servent::Started::yes);
  rig.form().upport_config.enter("1e999");
  EXPECT_EQ(rig.status_bar(), "Cannot use the same port for messages and uploading!");
  rig.form().port_config.enter("6346");
  auto peer = rig.connected_peer("10.0.0.2");
  EXPECT_EQ(rig.host_status(1), "Connected");
}

TEST(Listeners, TellWhenAPortIsTakenAndGoOnWithAnother) {
  ServentRig rig;
  rig.world.listen_raw("10.0.0.1", 7001, [](RawPeer&) {});
  rig.form().port_config.enter("7001");
  ASSERT_EQ(rig.host.screen().boxes.size(), 1U);
  const ShownBox& box = rig.host.screen().boxes[0];
  EXPECT_EQ(box.title, "Oops");
  EXPECT_EQ(box.icon, BoxIcon::information);
  EXPECT_EQ(box.text,
            "The Message port is already in use. Please run only one Gnutella application, or "
            "change the port. Incomming connections will go to the other gnutella app. Outgoing "
            "connections are still possible.");
  // Uploads are served as before; ports that are free can also change places.
  const auto reaches = [&](std::uint16_t port) {
    auto peer = rig.world.connect_raw("10.0.0.2", "10.0.0.1", port);
    rig.world.run_for(10);
    return peer->connected();
  };
  EXPECT_FALSE(reaches(6346));
  EXPECT_TRUE(reaches(6345));
  rig.form().upport_config.set_text("7002");
  rig.form().port_config.enter("6345");
  EXPECT_TRUE(reaches(6345));
  EXPECT_TRUE(reaches(7002));
  EXPECT_EQ(rig.host.screen().boxes.size(), 1U);
}

}  // namespace
}  // namespace velmora::sim
