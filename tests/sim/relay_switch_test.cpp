// The switch "relay", on and off: repeated queries, the way back of hits and pushes, own searches.
#include <gtest/gtest.h>

#include "overlay_chain.h"
#include "servent_rig.h"

namespace velmora::sim {
namespace {

enum : int { kPingCode = 0, kPushCode = 64, kQueryCode = 128, kHitCode = 129 };

class RelayRig : public ServentRig {
 public:
  explicit RelayRig(const std::string& relay, const std::string& ttl = "5")
      : ServentRig({{"relay_behaviour", relay}, {"max_in_host", "20"}, {"ttlMax_config", ttl}}),
        a(connected_peer("10.0.0.2")),
        b(connected_peer("10.0.0.3")),
        c(connected_peer("10.0.0.4")) {}

  // Sent as one read; what came of it has arrived everywhere.
  void from(const std::unique_ptr<RawPeer>& peer, const std::string& bytes) {
    peer->send(bytes);
    world.run_for(5);
  }
  // Everybody stays connected meanwhile.
  void wait_s(int seconds) {
    for (int i = 0; i < seconds; i += 10) {
      for (const auto* peer : {&a, &b, &c}) from(*peer, descriptor("p", kPingCode, 1, 0, ""));
      world.run_for(10'000 - 15);
    }
    take_all();
  }
  std::string take_all() { return a->take() + b->take() + c->take(); }

  std::unique_ptr<RawPeer> a, b, c;
};

std::string query(const std::string& guid, const std::string& text, int ttl = 4, int hops = 1) {
  return descriptor(guid, kQueryCode, ttl, hops, std::string(2, '\0') + text + '\0');
}

std::string hit(const std::string& guid, const std::string& name, int ttl = 4, int hops = 1,
                const std::string& servent = "servent of a hit") {
  const std::string start("\x01\xC9\x18\x0A\0\0\x09\x38\0\0\0\x01\0\0\0\x02\0\0\0", 19);
  return descriptor(guid, kHitCode, ttl, hops, start + name + std::string(2, '\0') + servent);
}

std::string push(const std::string& servent, int ttl = 4, int hops = 1) {
  return descriptor("push", kPushCode, ttl, hops,
                    servent + std::string("\x01\0\0\0\1\2\3\4\5\6", 10));
}

TEST(RelaySwitch, ARepeatedQueryGoesNoFurther) {
  for (const bool on : {false, true}) {
    RelayRig rig(on ? "on" : "off");
    const std::string passed = query("q", "abc", 3, 2);
    rig.from(rig.a, query("q", "abc"));
    rig.from(rig.a, query("q", "abc"));
    rig.from(rig.b, query("q", "abc"));
    EXPECT_EQ(rig.c->take(), on ? passed : passed + passed + passed);
    EXPECT_EQ(rig.a->take(), on ? "" : passed);
    EXPECT_EQ(rig.counter(rig.form().search_stat), "3 / 0");
    EXPECT_EQ(rig.form().lview.rows(), on ? 1U : 3U);

    // Another text is another query, and so is the same one a minute later.
    rig.take_all();
    rig.from(rig.b, query("q", "abcd"));
    EXPECT_EQ(rig.c->take(), query("q", "abcd", 3, 2));
    rig.wait_s(50);
    rig.from(rig.b, query("q", "abc"));
    EXPECT_EQ(rig.c->take(), passed);
  }
}

TEST(RelaySwitch, AHitGoesBackToWhoAsked) {
  for (const bool on : {false, true}) {
    RelayRig rig(on ? "on" : "off");
    rig.from(rig.a, query("q", "abc"));
    rig.take_all();
    rig.from(rig.b, hit("q", "abc.mp3"));
    EXPECT_EQ(rig.a->take(), on ? hit("q", "abc.mp3", 3, 2) : "");
    rig.from(rig.b, hit("nobody asked", "abc.mp3"));
    rig.from(rig.a, hit("q", "abc.mp3"));  // from where the query came
    EXPECT_EQ(rig.take_all(), "");
    EXPECT_EQ(rig.counter(rig.form().reply_stat), on ? "3 / 1" : "3 / 0");
    EXPECT_EQ(rig.form().route_stat.text(), on ? "2" : "0");
    EXPECT_EQ(rig.form().totalsearch.text(), on ? "0" : "3");
  }
}

TEST(RelaySwitch, OnlyTooManyHopsStopAHit) {
  const struct {
    int ttl, hops, ttl_out, hops_out;  // ttl_out 0: dropped
  } cases[] = {{4, 0, 3, 1}, {1, 0, 1, 1}, {0, 4, 1, 5}, {200, 0, 5, 1}, {9, 5, 0, 0}};
  for (const auto& c : cases) {
    RelayRig rig("on");
    rig.from(rig.a, query("q", "abc"));
    rig.take_all();
    rig.from(rig.b, hit("q", "abc.mp3", c.ttl, c.hops));
    EXPECT_EQ(rig.take_all(), c.ttl_out == 0 ? "" : hit("q", "abc.mp3", c.ttl_out, c.hops_out));
    EXPECT_EQ(rig.counter(rig.form().drop_stat), c.ttl_out == 0 ? "1" : "0");
  }
}

TEST(RelaySwitch, SearchesOfOneIdentifierAreToldApartByTheirWords) {
  RelayRig rig("on");
  rig.from(rig.a, query("q", "blue river"));
  rig.from(rig.b, query("q", "red hill"));
  rig.take_all();
  rig.from(rig.c, hit("q", "The RIVER is blue.mp3"));
  EXPECT_EQ(rig.take_all(), hit("q", "The RIVER is blue.mp3", 3, 2));
  rig.from(rig.c, hit("q", "the river is blue.mp3"));
  EXPECT_NE(rig.a->take(), "");
  rig.from(rig.c, hit("q", "red hills.mp3"));
  EXPECT_NE(rig.b->take(), "");
  rig.from(rig.c, hit("q", "green.mp3"));
  EXPECT_EQ(rig.a->take(), "");
  EXPECT_NE(rig.b->take(), "") << "the newest, when none fits";
}

TEST(RelaySwitch, AClosedConnectionsRoutesAreGoneThoughItsSlotIsUsedAgain) {
  RelayRig rig("on");
  rig.from(rig.a, query("q", "abc"));
  rig.from(rig.a, hit("own", "x.mp3"));
  rig.a->close();
  rig.world.run_for(5100);
  EXPECT_EQ(rig.host_status(1), "Sock freed");
  rig.a = rig.connected_peer("10.0.0.2");
  EXPECT_EQ(rig.host_status(1), "Connected");
  rig.take_all();
  rig.from(rig.b, hit("q", "abc.mp3"));
  rig.from(rig.b, push("servent of a hit"));
  EXPECT_EQ(rig.take_all(), "");
  EXPECT_EQ(rig.counter(rig.form().route_stat), "3");
}

TEST(RelaySwitch, APushGoesToWhereItsServentsHitsCameFrom) {
  for (const bool on : {false, true}) {
    RelayRig rig(on ? "on" : "off");
    rig.from(rig.b, hit("h", "x.mp3", 4, 1, "a servent beyond"));
    rig.from(rig.a, push("a servent beyond", 1));
    EXPECT_EQ(rig.a->take() + rig.c->take(), "");
    EXPECT_EQ(rig.b->take(), on ? push("a servent beyond", 1, 2) : "");
    rig.from(rig.a, push("nobody knows him"));
    rig.from(rig.b, push("a servent beyond"));  // it would go back
    EXPECT_EQ(rig.take_all(), "");
    EXPECT_EQ(rig.counter(rig.form().push_stat), on ? "3 / 1" : "3 / 0");
    EXPECT_EQ(rig.form().route_stat.text(), on ? "3" : "0");
  }
}

// Bytes that are missing would be taken from what follows.
TEST(RelaySwitch, WhatIsCutShortIsNotPassedOn) {
  RelayRig rig("on");
  const std::string whole = query("q", "abc");
  rig.from(rig.a, whole.substr(0, whole.size() - 1));
  EXPECT_EQ(rig.take_all(), "");
  rig.from(rig.a, whole);
  rig.take_all();
  rig.from(rig.b, hit("q", "abc.mp3").substr(0, 60));
  EXPECT_EQ(rig.take_all(), "");
  EXPECT_EQ(rig.counter(rig.form().net_stat), "3");
  EXPECT_EQ(rig.host_counts(1), "0/2/1");
  EXPECT_EQ(rig.host_counts(2), "1/1/1");
}

TEST(RelaySwitch, ResultsAreThoseOfOwnSearches) {
  for (const bool on : {false, true}) {
    RelayRig rig(on ? "on" : "off");
    rig.world.set_local_time({2000, 6, 30, 9, 0, 0});
    rig.form().search_num.choose(2);
    rig.form().Tsearch.enter("abc");
    rig.world.run_for(5);
    rig.take_all();
    rig.from(rig.a, hit("9012345678901234", "abc.mp3"));
    rig.from(rig.a, hit("somebody else's", "abc.mp3"));
    rig.world.run_for(1100);
    EXPECT_EQ(rig.form().totalsearch.text(), on ? "1" : "2");
    EXPECT_EQ(rig.form().lfound.cell_tooltip(1, 1), on ? "abc   Search 2" : "abc");
    // It comes back: not forwarded, no matter from whom.
    rig.from(rig.b, query("9012345678901234", "abc"));
    EXPECT_EQ(rig.take_all().empty(), on);
  }
}

TEST(RelaySwitch, TurnedOnItKnowsTheSearchesFromBefore) {
  RelayRig rig("off");
  rig.world.set_local_time({2000, 6, 30, 9, 0, 0});
  rig.form().search_num.choose(2);
  rig.form().Tsearch.enter("abc");
  rig.world.run_for(5);
  rig.take_all();
  rig.turn("relay", true);
  rig.from(rig.a, hit("9012345678901234", "abc.mp3"));
  rig.world.run_for(1100);
  EXPECT_EQ(rig.form().totalsearch.text(), "1");
  EXPECT_EQ(rig.form().lfound.cell_tooltip(1, 1), "abc   Search 2");
  rig.from(rig.b, query("9012345678901234", "abc"));
  EXPECT_EQ(rig.take_all(), "");
  rig.from(rig.b, hit("", "abc.mp3"));  // an empty slot is no search
  EXPECT_EQ(rig.counter(rig.form().route_stat), "1");
}

TEST(RelaySwitch, TurnedOffItForgetsAndIsClassicAgain) {
  RelayRig rig("on");
  rig.from(rig.a, query("q", "abc"));
  rig.take_all();
  rig.form().behaviour.choose(kClassicProfile);
  rig.from(rig.a, query("q", "abc"));
  EXPECT_EQ(rig.b->take(), query("q", "abc", 3, 2));
  rig.from(rig.b, hit("q", "abc.mp3"));
  EXPECT_EQ(rig.form().totalsearch.text(), "1");
  rig.form().behaviour.choose(kOwnChoice);
  rig.turn("relay", true);
  rig.take_all();
  rig.from(rig.b, hit("q", "abc.mp3"));
  EXPECT_EQ(rig.take_all(), "");
  EXPECT_EQ(rig.counter(rig.form().route_stat), "1");
}

// Who of three in a row relays decides who gets the last one's results.
TEST(RelaySwitch, AmongClassicServents) {
  const struct {
    std::array<bool, 3> relay;
    const char* first;
    const char* second;
  } cases[] = {
      {{false, false, false}, "0", "1"}, {{true, true, true}, "1", "0"},
      {{false, true, false}, "1", "0"},  {{true, false, true}, "0", "1"},
      {{false, true, true}, "1", "0"},
  };
  for (const auto& c : cases) {
    std::array<OverlayChain::Fields, 3> fields;
    for (std::size_t i = 0; i < 3; ++i) {
      fields[i] = {{"relay_behaviour", c.relay[i] ? "on" : "off"}};
    }
    OverlayChain chain(fields);
    EXPECT_EQ(chain.search("song"), std::make_pair(std::string(c.first), std::string(c.second)));
  }
}

// A ring of three: what goes round is stopped at the first repeat.
TEST(RelaySwitch, AQueryInARingEndsWhereItHasBeen) {
  for (const bool on : {false, true}) {
    const OverlayChain::Fields fields = {{"relay_behaviour", on ? "on" : "off"}};
    OverlayChain chain({fields, fields, fields});
    chain.form(2).new_host.enter("1.0.0.1");
    chain.world.run_for(100);
    chain.search("song");
    EXPECT_EQ(chain.form(0).totalsearch.text(), on ? "1" : "2");
    EXPECT_EQ(chain.form(0).search_stat.text(), on ? "0 / 0" : "2 / 0");
    EXPECT_EQ(chain.form(1).search_stat.text(), on ? "2 / 0" : "4 / 0");
  }
}

}  // namespace
}  // namespace velmora::sim
