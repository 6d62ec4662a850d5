#include <gmock/gmock.h>

#include "servent_rig.h"

namespace velmora::sim {
namespace {

enum : int { kPingCode = 0, kPongCode = 1, kQueryCode = 128 };

const std::string kPongPayload("\xCA\x18\x0A\x00\x00\x09\x05\x00\x00\x00\x64\x00\x00\x00", 14);

struct Peers {
  explicit Peers(ServentRig& rig)
      : a(rig.connected_peer("10.0.0.2")),
        b(rig.connected_peer("10.0.0.3")),
        c(rig.connected_peer("10.0.0.4")) {}
  std::unique_ptr<RawPeer> a, b, c;
};

ServentRig::Fields open_doors(const std::string& ttl = "5") {
  return {{"max_in_host", "20"}, {"ttlMax_config", ttl}};
}

TEST(Routing, AnswersAndForwardsANewPingAndCountsARepeatedOne) {
  ServentRig rig(open_doors());
  Peers peers(rig);
  peers.a->send(descriptor("ping one", kPingCode, 3, 1, ""));
  rig.world.run_for(5);
  // Port 6346, address 10.0.0.1, nothing shared.
  const std::string pong("\xCA\x18\x0A\x00\x00\x01\0\0\0\0\0\0\0\0", 14);
  EXPECT_EQ(peers.a->take(), descriptor("ping one", kPongCode, 5, 0, pong));
  const std::string forwarded = descriptor("ping one", kPingCode, 2, 2, "");
  EXPECT_EQ(peers.b->take(), forwarded);
  EXPECT_EQ(peers.c->take(), forwarded);

  peers.b->send(descriptor("ping one", kPingCode, 3, 1, ""));
  rig.world.run_for(5);
  EXPECT_EQ(peers.a->take() + peers.b->take() + peers.c->take(), "");
  EXPECT_EQ(rig.counter(rig.form().ping_stat), "2 / 2");
  EXPECT_EQ(rig.form().myping_stat.text(), "1 / 0");
  EXPECT_EQ(rig.form().mypong_stat.text(), "0 / 1");
  EXPECT_EQ(rig.form().net_stat.text(), "2");
  EXPECT_EQ(rig.host_counts(2), "1/1/0");
}

TEST(Routing, TtlAndHopRules) {
  struct Case {
    int ttl, hops;
    const char* maximum;
    int ttl_out, hops_out;  // ttl_out 0: not forwarded
  };
  const Case table[] = {
      {1, 0, "5", 0, 0},   {0, 0, "5", 0, 0},       {2, 0, "5", 1, 1},   {200, 0, "5", 5, 1},
      {52, 0, "5", 5, 1},  {51, 0, "5", 50, 1},     {30, 6, "7", 29, 7}, {30, 7, "7", 0, 0},
      {9, 255, "5", 0, 0}, {9, 255, "255", 8, 255}, {9, 0, "0", 0, 0},   {9, 0, "", 0, 0},
  };
  for (const Case& c : table) {
    ServentRig rig(open_doors(c.maximum));
    Peers peers(rig);
    peers.a->send(descriptor("q", kQueryCode, c.ttl, c.hops, std::string("\0\0abc\0", 6)));
    rig.world.run_for(5);
    const std::string expected = c.ttl_out == 0 ? ""
                                                : descriptor("q", kQueryCode, c.ttl_out, c.hops_out,
                                                             std::string("\0\0abc\0", 6));
    EXPECT_EQ(peers.b->take(), expected) << c.ttl << " " << c.hops << " " << c.maximum;
    EXPECT_EQ(rig.counter(rig.form().drop_stat), c.ttl_out == 0 ? "1" : "0");
  }
}

TEST(Routing, The402ndIdentifierPushesOutTheFirst) {
  ServentRig rig(open_doors());
  Peers peers(rig);
  for (int i = 0; i < 402; ++i) {
    peers.a->send(descriptor("ping " + std::to_string(i), kPingCode, 2, 0, ""));
    rig.world.run_for(2);
  }
  peers.b->send(descriptor("ping 0", kPongCode, 2, 0, kPongPayload));
  peers.b->send(descriptor("ping 2", kPongCode, 2, 0, kPongPayload));
  EXPECT_EQ(rig.counter(rig.form().pong_stat), "2 / 1");
  EXPECT_EQ(rig.form().route_stat.text(), "1");
}

TEST(Routing, QueriesAreAnsweredAndForwardedAgain) {
  ServentRig rig(open_doors());
  Peers peers(rig);
  const std::string query =
      descriptor(std::string("\x01\xAB", 2), kQueryCode, 4, 1, std::string("\0\0abc\0", 6));
  for (int i = 0; i < 21; ++i) peers.a->send(query);
  rig.world.run_for(50);
  EXPECT_EQ(peers.b->received().size(), 21 * query.size());
  EXPECT_EQ(rig.counter(rig.form().search_stat), "21 / 0");
  EXPECT_EQ(rig.form().lview.rows(), 20U);
  EXPECT_EQ(rig.form().lview.cell(20, 1), "abc");
  EXPECT_EQ(rig.form().lview.cell(1, 2), "01-AB-78-78-78-78-78-78-78-78-78-78-78-78-78-78");
}

// A neighbour that reads nothing holds at most its limit; its further copies are dropped with the
// platform's line while the others are served.
TEST(Routing, ASlowReaderLosesItsCopiesOnly) {
  ServentRig rig(open_doors());
  Peers peers(rig);
  peers.b->set_reading(false);
  const std::string query = descriptor("q", kQueryCode, 4, 1, std::string(257, 'a'));
  const int sent = 8000;  // 2.2 MB
  for (int i = 0; i < sent / 40; ++i) {
    std::string burst;
    for (int k = 0; k < 40; ++k) burst += query;
    peers.a->send(burst);
    rig.world.run_for(3);
  }
  rig.world.run_for(100);
  EXPECT_EQ(peers.c->received().size(), sent * query.size());
  EXPECT_GT(rig.logged("foward_data: No buffer space available"), 0);
  const double held = std::stod(rig.form().lHosts.cell(2, 7));
  EXPECT_GT(held, 1000000);
  EXPECT_LE(held, 1048576);
}

TEST(OwnDescriptors, APongTellsTheForcedAddressAndNothingDuringAScan) {
  auto fields = open_doors();
  fields.emplace_back("forceIP_config", "1.2.3.4");
  ServentRig rig(fields);
  Peers peers(rig);
  rig.form().sharenum_config.set_text("12");
  rig.form().sharesize_config.set_text("1,234,567");
  peers.a->send(descriptor("one", kPingCode, 1, 0, ""));
  rig.world.run_for(5);
  EXPECT_EQ(peers.a->take(),
            descriptor("one", kPongCode, 5, 0,
                       std::string("\xCA\x18\x01\x02\x03\x04\x0C\0\0\0\x87\xD6\x12\0", 14)));
  rig.form().sharenum_config.set_text("--");
  peers.a->send(descriptor("two", kPingCode, 1, 0, ""));
  rig.world.run_for(5);
  EXPECT_EQ(peers.a->take(), "");
  EXPECT_EQ(rig.logged("Error: send_pong Type mismatch"), 1);
}

TEST(OwnDescriptors, ATtlThatIsNoNumberSendsNothing) {
  ServentRig rig(open_doors("many"));
  Peers peers(rig);
  rig.form().more_cache.click();
  rig.form().Tsearch.enter("abc");
  rig.world.run_for(5);
  EXPECT_EQ(peers.a->take(), "");
  EXPECT_EQ(rig.logged("Error: send_ping Type mismatch"), 1);
  EXPECT_EQ(rig.logged("Error: send_query: Type mismatch"), 1);
}

TEST(HostDiscovery, MorePingsTheConnectionsInTurn) {
  ServentRig rig(open_doors());
  rig.form().more_cache.click();
  EXPECT_EQ(rig.status_bar(), "No Connections to send Ping!");
  Peers peers(rig);
  peers.b->close();
  rig.world.run_for(5100);
  EXPECT_EQ(rig.host_status(2), "Sock freed");
  for (const char* socket : {"1", "3", "1", "3"}) {
    rig.form().more_cache.click();
    EXPECT_EQ(rig.status_bar(), std::string("Sent Ping to Socket: ") + socket);
  }
}

}  // namespace
}  // namespace velmora::sim
