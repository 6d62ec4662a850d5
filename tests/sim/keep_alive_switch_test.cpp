// The switch "keep_alive", on and off: pings on silent connections, and what replaces those that
// fell. Cached addresses answer nothing unless a test has someone listen there.
#include <gmock/gmock.h>

#include <map>
#include <set>

#include "cache_rows.h"
#include "servent_rig.h"

namespace velmora::sim {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class KeepRig : public ServentRig {
 public:
  KeepRig(const std::string& keep_alive, int cached, const std::string& max_out = "2")
      : ServentRig({{"keep_alive_behaviour", keep_alive},
                    {"max_in_host", "9"},
                    {"max_out_host", max_out},
                    {"ttlMax_config", "5"}},
                   1, [&](SimHost& of) {
                     of.files().put(kCacheFileName, cache(cached));
                     return of.platform();
                   }) {
    world.record();
  }

  static std::string address(int row) { return "1.0.0." + std::to_string(row); }
  static std::string cache(int rows) {
    std::vector<CacheRow> all;
    for (int row = 1; row <= rows; ++row) all.push_back({address(row)});
    return cache_file(all);
  }

  // The host of this row accepts connections from now on.
  void accept_at(int row) {
    world.add_host(address(row));
    world.listen_raw(address(row), 6346, [this, row](RawPeer& peer) {
      peer.send(kWelcome);
      peers[row] = &peer;
    });
  }
  void connect_to(int row) {
    accept_at(row);
    form().new_host.enter(address(row));
    ASSERT_TRUE(world.run_until([&] { return standing().contains(row); }, 1000));
  }
  std::set<int> standing() {
    std::set<int> rows;
    for (std::size_t i = 1; i <= form().lHosts.rows(); ++i) {
      const std::string shown = form().lHosts.cell(i, 1);
      if (form().lHosts.cell(i, 4).starts_with("Sock") || !shown.starts_with("1.0.0.")) continue;
      if (host_status(i) == "Connected" || host_status(i).starts_with("Waiting")) {
        rows.insert(std::stoi(shown.substr(6)));
      }
    }
    return rows;
  }
  // Everybody that is connected sends a ping every 5 s meanwhile.
  void live(std::int64_t ms) {
    for (const std::int64_t end = world.now_ms() + ms; world.now_ms() < end;) {
      for (const auto& [row, peer] : peers) {
        if (peer->connected()) peer->send(descriptor("p", 0, 1, 0, ""));
      }
      world.run_for(std::min<std::int64_t>(5000, end - world.now_ms()));
    }
  }
  // Second after `since_ms` -> the row that was tried then.
  std::vector<std::pair<std::int64_t, int>> tries(std::int64_t since_ms) const {
    std::vector<std::pair<std::int64_t, int>> out;
    for (const TranscriptEntry& entry : world.transcript()) {
      if (entry.kind != "connecting" || entry.host != "10.0.0.1") continue;
      if (entry.time_us < since_ms * 1000) continue;
      out.emplace_back((entry.time_us / 1000 - since_ms) / 1000, std::stoi(entry.peer.substr(6)));
    }
    return out;
  }

  std::map<int, RawPeer*> peers;
};

TEST(KeepAliveSwitch, ASilentConnectionIsPinged) {
  for (const bool on : {false, true}) {
    KeepRig rig(on ? "on" : "off", 0);
    auto peer = rig.connected_peer("10.0.0.2");
    // Ticks come every 5 s from the accept on, a few ms ago.
    rig.world.run_for(9990);
    EXPECT_EQ(peer->received(), "");
    rig.world.run_for(20);
    const std::string first = peer->take();
    ASSERT_EQ(first.size(), on ? 23U : 0U);
    if (on) {
      EXPECT_EQ(first.substr(16), std::string("\0\1\0\0\0\0\0", 7));  // ping, TTL 1, hops 0
      EXPECT_EQ(rig.counter(rig.form().myping_stat), "0 / 1");
    }
    rig.world.run_for(10'000);
    const std::string second = peer->take();
    EXPECT_EQ(second.size(), on ? 23U : 0U);
    if (on) {
      EXPECT_NE(second.substr(0, 16), first.substr(0, 16));
    }
    rig.world.run_for(5000);
    EXPECT_EQ(rig.host_status(1), "No Data, Disconnecting");
  }
}

// One that answers stays, however long: no ping is taken for a repeated one.
TEST(KeepAliveSwitch, TwoServentsStayConnected) {
  for (const bool on : {false, true}) {
    KeepRig rig(on ? "on" : "off", 0);
    ServentOptions options;
    options.set = {{"max_in_host", "9"}};
    Servent classic(rig.world.add_host("1.0.0.1").platform(), std::move(options));
    classic.start();
    rig.form().new_host.enter("1.0.0.1");
    rig.world.run_for(std::int64_t{10} * 60'000);
    EXPECT_EQ(rig.standing().contains(1), on);
  }
}

TEST(KeepAliveSwitch, AConnectionThatFellIsReplacedOneTryAtATime) {
  for (const bool on : {false, true}) {
    KeepRig rig(on ? "on" : "off", 4, "2");
    rig.connect_to(3);
    rig.accept_at(4);
    rig.live(30'000);
    EXPECT_THAT(rig.tries(rig.world.now_ms() - 30'000), IsEmpty()) << "nothing has fallen";
    const std::int64_t fell_ms = rig.world.now_ms();
    rig.peers[3]->close();
    rig.live(1);
    rig.world.run_for(1);
    rig.live(200'000);
    if (!on) {
      EXPECT_THAT(rig.tries(fell_ms), IsEmpty());
      continue;
    }
    // The pauses grow, and begin anew with one that succeeded; two stand then.
    EXPECT_THAT(rig.tries(fell_ms), ElementsAre(Pair(6, 1), Pair(18, 2), Pair(42, 3), Pair(90, 4)));
    EXPECT_EQ(rig.standing(), (std::set<int>{3, 4}));
  }
}

TEST(KeepAliveSwitch, PausesGrowToFiveMinutes) {
  KeepRig rig("on", 1, "2");
  rig.connect_to(1);
  rig.peers[1]->close();
  const std::int64_t fell_ms = rig.world.now_ms();
  // It takes connections and says nothing.
  rig.world.run_for(1);
  rig.world.conditions().refuse_probability = 1;
  rig.world.run_for(1'200'000);
  std::vector<std::int64_t> at;
  for (const auto& [second, row] : rig.tries(fell_ms)) at.push_back(second);
  EXPECT_THAT(at, ElementsAre(6, 18, 42, 90, 186, 378, 678, 978));
}

TEST(KeepAliveSwitch, WhatAPersonEndsIsNotReplaced) {
  KeepRig rig("on", 3, "2");
  rig.connect_to(1);
  rig.connect_to(2);
  rig.form().lHosts.activate(1);
  const std::int64_t left_ms = rig.world.now_ms();
  rig.live(60'000);
  EXPECT_THAT(rig.tries(left_ms), IsEmpty());
  // When another falls, the host that was left is passed over for ten minutes.
  rig.peers[2]->close();
  rig.world.run_for(2);
  rig.accept_at(3);
  rig.live(300'000);
  for (const auto& [second, row] : rig.tries(left_ms)) EXPECT_NE(row, 1) << second;
  EXPECT_EQ(rig.standing(), (std::set<int>{2, 3}));
}

TEST(KeepAliveSwitch, NothingWithoutALimitOrACacheOrAnOutgoingConnection) {
  const struct {
    const char* max_out;
    int cached;
    bool outgoing;
  } cases[] = {{"0", 3, true}, {"", 3, true}, {"2", 0, true}, {"2", 3, false}};
  for (const auto& c : cases) {
    KeepRig rig("on", c.cached, c.max_out);
    std::unique_ptr<RawPeer> incoming = rig.connected_peer("10.0.0.2");
    if (c.outgoing) rig.connect_to(1);
    const std::int64_t begun_ms = rig.world.now_ms();
    incoming->close();
    if (c.outgoing) rig.peers[1]->close();
    rig.live(60'000);
    EXPECT_THAT(rig.tries(begun_ms), IsEmpty()) << c.max_out << " " << c.cached;
  }
}

TEST(KeepAliveSwitch, TurnedOffItStops) {
  KeepRig rig("on", 3, "2");
  rig.connect_to(1);
  rig.peers[1]->close();
  const std::int64_t fell_ms = rig.world.now_ms();
  rig.live(10'000);
  EXPECT_EQ(rig.tries(fell_ms).size(), 1U);
  rig.form().behaviour.choose(kClassicProfile);
  rig.live(100'000);
  EXPECT_EQ(rig.tries(fell_ms).size(), 1U);
}

}  // namespace
}  // namespace velmora::sim
