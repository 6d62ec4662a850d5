// Connecting to cached hosts: the automatic connector, the double click in lcache. Cached addresses
// answer nothing unless a test has someone listen there.
#include <gmock/gmock.h>

#include <map>

#include "cache_rows.h"
#include "servent_rig.h"

namespace velmora::sim {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Milliseconds after the press -> the rows that were tried then.
using Attempts = std::map<std::int64_t, std::vector<int>>;

class CacheRig : public ServentRig {
 public:
  CacheRig(int rows, const std::string& max_out)
      : ServentRig({{"max_out_host", max_out}, {"max_in_host", "5"}}, 1, [&](SimHost& of) {
          std::vector<CacheRow> all;
          for (int row = 1; row <= rows; ++row) {
            all.push_back({address(row), port(row), "host" + std::to_string(row) + ".example"});
          }
          of.files().put(kCacheFileName, cache_file(all));
          return of.platform();
        }) {
    world.record();
  }

  static std::string address(int row) { return "1.0.0." + std::to_string(row); }
  static int port(int row) { return 7000 + row; }
  bool running() { return !form().connect_auto.enabled(); }

  void press() {
    pressed_us = world.now_us();
    form().connect_auto.click();
  }
  Attempts attempts() const {
    Attempts out;
    for (const TranscriptEntry& entry : world.transcript()) {
      if (entry.kind != "connecting" || entry.host != "10.0.0.1") continue;
      if (entry.time_us < pressed_us) continue;
      const int row = std::stoi(entry.peer.substr(6));
      EXPECT_EQ(entry.peer, address(row) + ":" + std::to_string(port(row)));
      EXPECT_EQ((entry.time_us - pressed_us) % 1000, 0);
      out[(entry.time_us - pressed_us) / 1000].push_back(row);
    }
    return out;
  }
  // From now on the host of this row accepts connections.
  void accept_at(int row) {
    world.add_host(address(row));
    world.listen_raw(address(row), static_cast<std::uint16_t>(port(row)),
                     [](RawPeer& peer) { peer.send(kWelcome); });
  }

  std::int64_t pressed_us = 0;
};

TEST(AutoConnector, TriesABatchEveryFiveSeconds) {
  struct Case {
    int rows;
    const char* max_out;
    Attempts tried;  // within 22 seconds
    int stops_ms;    // 0: goes on
  };
  const Case table[] = {
      // one row is skipped after every batch; a batch that would pass the end begins anew
      {12,
       "4",
       {{0, {1, 2, 3, 4}},
        {5000, {6, 7, 8, 9}},
        {10000, {1, 2, 3, 4}},
        {15000, {6, 7, 8, 9}},
        {20000, {1, 2, 3, 4}}},
       0},
      // the last batch may leave the cursor at the end
      {5, "4", {{0, {1, 2, 3, 4}}}, 5000},
      // the slot of an attempt is taken for 9 seconds, meanwhile row 1 is "already connected"
      {12, "12", {{0, {1}}, {10000, {1}}, {20000, {1}}}, 0},
      {12, "32767", {{0, {1}}, {10000, {1}}, {20000, {1}}}, 0},
      // rows 1, then past the end
      {2, "4", {{0, {1}}}, 5000},
      {3, "1", {{0, {1}}}, 5000},
      {4, "1", {{0, {1}}, {5000, {3}}}, 10000},
  };
  for (const Case& c : table) {
    SCOPED_TRACE(std::to_string(c.rows) + " rows, " + c.max_out);
    CacheRig rig(c.rows, c.max_out);
    rig.world.run_for(1234);
    rig.press();
    if (c.stops_ms > 0) {
      rig.world.run_for(c.stops_ms - 1);
      EXPECT_TRUE(rig.running());
      rig.world.run_for(1);
      EXPECT_FALSE(rig.running());
    } else {
      EXPECT_TRUE(rig.running());
    }
    rig.world.run_for(22'000 - c.stops_ms);
    EXPECT_EQ(rig.running(), c.stops_ms == 0);
    EXPECT_EQ(rig.attempts(), c.tried);
    EXPECT_EQ(rig.status_bar().find("lready"), std::string::npos);
  }
}

TEST(AutoConnector, StopsAtOnceWhereThereIsNothingToTry) {
  struct Case {
    int rows;
    const char* max_out;
    bool logged;
  };
  const Case table[] = {
      {12, "0", false},   {12, "-5", false},   {12, "none", false},   {12, "", false},
      {0, "4", false},    {1, "4", false},     {12, "-32768", false}, {12, "1e999", true},
      {12, "9e99", true}, {12, "32768", true}, {12, "-1e999", true},
  };
  for (const Case& c : table) {
    SCOPED_TRACE(std::to_string(c.rows) + " rows, " + c.max_out);
    CacheRig rig(c.rows, c.max_out);
    rig.world.run_for(100);
    rig.log.clear();
    rig.press();
    EXPECT_FALSE(rig.running());
    rig.world.run_for(20'000);
    EXPECT_FALSE(rig.running());
    EXPECT_THAT(rig.attempts(), IsEmpty());
    if (c.logged) {
      EXPECT_THAT(rig.log, ElementsAre("Find_alive_hosts: Overflow"));
    } else {
      EXPECT_THAT(rig.log, IsEmpty());
    }
  }
}

TEST(AutoConnector, EndsWhenEnoughStandInEitherDirection) {
  CacheRig rig(12, "2");
  rig.accept_at(1);
  rig.press();
  rig.world.run_for(1000);
  EXPECT_EQ(rig.host_status(1), "Connected");
  auto peer = rig.connected_peer("10.0.0.2");
  rig.world.run_until([&] { return !rig.running(); }, 10'000);
  EXPECT_EQ(rig.world.now_us(), rig.pressed_us + 5'000'000);
  rig.world.run_for(7000);  // the silence time-out, 25 s, is still far
  EXPECT_FALSE(rig.running());
  EXPECT_EQ(rig.attempts(), (Attempts{{0, {1, 2}}}));

  // The limit is read anew at every step, and the cursor went back to row 1, which is connected.
  rig.form().max_out_host.set_text("3");
  rig.press();
  EXPECT_TRUE(rig.running());
  rig.form().connect_auto.click();  // not enabled: nothing more
  rig.world.run_for(4999);
  EXPECT_EQ(rig.attempts(), (Attempts{{0, {2, 3}}}));
  rig.form().max_out_host.set_text("2");
  rig.world.run_for(1);
  EXPECT_FALSE(rig.running());
}

// What the person types meanwhile must not leave the button disabled for good.
TEST(AutoConnector, EndsAtALimitThatOverflowsMeanwhile) {
  CacheRig rig(12, "4");
  rig.press();
  rig.form().max_out_host.set_text("99999");
  rig.world.run_for(5000);
  EXPECT_FALSE(rig.running());
  rig.form().max_out_host.set_text("4");
  rig.world.run_for(10'000);
  EXPECT_EQ(rig.attempts(), (Attempts{{0, {1, 2, 3, 4}}}));
  rig.press();
  EXPECT_EQ(rig.attempts(), (Attempts{{0, {6, 7, 8, 9}}})) << "the cursor kept its place";
}

// Hosts that the cache loses or gains between two batches.
TEST(AutoConnector, GoesByTheRowsOfTheMoment) {
  CacheRig rig(12, "4");
  rig.press();
  for (int i = 0; i < 8; ++i) rig.form().remove_cache.click();
  rig.world.run_for(4999);
  EXPECT_TRUE(rig.running());
  rig.world.run_for(1);
  EXPECT_FALSE(rig.running()) << "the cursor, 6, is past the 4 rows that are left";
  EXPECT_EQ(rig.attempts(), (Attempts{{0, {1, 2, 3, 4}}}));
}

std::size_t tried_at_once(CacheRig& rig) {
  const Attempts attempts = rig.attempts();
  EXPECT_EQ(attempts.size(), 1U);
  return attempts.begin()->second.size();
}

// So that other events need not wait for all of it.
TEST(AutoConnector, ALargeBatchTakesSeveralTurns) {
  CacheRig all(200, "150");
  all.press();
  EXPECT_LT(tried_at_once(all), 100U);
  all.world.run_for(4999);
  EXPECT_EQ(tried_at_once(all), 150U);
  EXPECT_TRUE(all.running());

  CacheRig cut_short(200, "150");
  cut_short.press();
  for (int i = 0; i < 100; ++i) cut_short.form().remove_cache.click();
  cut_short.world.run_for(5000);
  EXPECT_EQ(tried_at_once(cut_short), 100U);
  EXPECT_FALSE(cut_short.running());

  CacheRig ended(200, "150");
  ended.press();
  const std::size_t tried = tried_at_once(ended);
  ended.servent->shutdown();
  ended.world.run_for(10'000);
  EXPECT_EQ(tried_at_once(ended), tried);
}

TEST(CacheList, ADoubleClickConnectsAndShowsTheResult) {
  CacheRig rig(3, "2");
  rig.accept_at(2);
  rig.world.run_for(1000);
  rig.form().StatusBar.set_panel(1, "before");
  rig.form().lcache.activate(2);
  EXPECT_EQ(rig.status_bar(), "");
  EXPECT_EQ(rig.host_status(1), "Requesting to Connect");
  EXPECT_EQ(rig.form().lHosts.cell_tooltip(1, 1), "1.0.0.2:7002  host2.example");
  rig.world.run_for(100);
  EXPECT_EQ(rig.host_status(1), "Connected");
  rig.form().lcache.activate(2);
  EXPECT_EQ(rig.status_bar(), "Already connected to this host.");
  EXPECT_EQ(rig.form().lHosts.rows(), 1U);
}

TEST(CacheList, ADoubleClickBringsNamesUpToDate) {
  CacheRig rig(3, "2");
  rig.world.add_host("1.0.0.3");
  rig.world.run_for(5100);  // between two passes of the timer
  auto peer = rig.connected_peer("1.0.0.3");
  EXPECT_THAT(rig.form().lHosts.cell_tooltip(1, 1), testing::EndsWith("  "));
  rig.form().lcache.activate(2);
  rig.world.run_for(100);
  EXPECT_THAT(rig.form().lHosts.cell_tooltip(1, 1), testing::EndsWith("  host3.example"));
}

}  // namespace
}  // namespace velmora::sim
