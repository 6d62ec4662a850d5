// The host cache as a person sees it: pongs come in over a connection, lcache shows them, the
// buttons change them, the file keeps them.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <array>

#include "cache_rows.h"
#include "servent_rig.h"

namespace velmora::sim {
namespace {

// Hosts 4.0.0.1, 4.0.0.2 and so on, row 1 first.
std::string some_hosts(std::size_t rows) {
  std::vector<CacheRow> all;
  for (std::size_t row = 1; row <= rows; ++row) {
    all.push_back({fmt::format("4.0.0.{}", row), 6346, fmt::format("host{}.example", row)});
  }
  return cache_file(all);
}

// A servent that found this cache file at its start, and a neighbour that sends pongs.
class CacheRig : public ServentRig {
 public:
  explicit CacheRig(const std::string& file = {})
      : ServentRig({}, 1,
                   [&](SimHost& of) {
                     world.set_local_time({2026, 11, 21, 9, 0, 0});
                     if (!file.empty()) of.files().put(kCacheFileName, file);
                     return of.platform();
                   }),
        peer(connected_peer("10.0.0.2")) {
    world.run_for(1000);
  }

  void send_pong(const std::array<int, 4>& address, std::uint32_t files, int ttl = 3,
                 int hops = 2) {
    std::string payload = "\xCB\x18";  // port 6347
    for (const int part : address) payload += static_cast<char>(part);
    for (const std::uint32_t value : {files, files * 1000}) {
      for (unsigned shift = 0; shift < 32; shift += 8) payload += static_cast<char>(value >> shift);
    }
    peer->send(descriptor(std::to_string(++sent), 1, ttl, hops, payload));
    world.run_for(5);
  }
  // The shown rows, cells joined by a blank.
  std::vector<std::string> rows() {
    std::vector<std::string> all;
    const ListView& list = form().lcache;
    for (std::size_t row = 1; row <= list.rows(); ++row) {
      all.push_back(list.cell(row, 1));
      for (std::size_t column = 2; column <= 6; ++column)
        all.back() += " " + list.cell(row, column);
    }
    return all;
  }
  std::vector<std::string> hosts() {
    std::vector<std::string> all;
    for (std::size_t row = 1; row <= form().lcache.rows(); ++row) {
      all.push_back(form().lcache.cell(row, 1));
    }
    return all;
  }

  std::unique_ptr<RawPeer> peer;
  int sent = 0;
};

using testing::ElementsAre;

TEST(HostCache, MovesAHostThatPongsToTheTopAndKeepsItsName) {
  CacheRig rig(some_hosts(8));
  EXPECT_EQ(rig.status_bar(), "load_shared: No such file or directory");
  rig.send_pong({4, 0, 0, 7}, 32767);
  rig.send_pong({5, 6, 7, 8}, 0);
  rig.world.run_for(1000);
  EXPECT_THAT(rig.rows(), ElementsAre("5.6.7.8:6347 0 0 2 3 1", "4.0.0.7:6347 32767 32767000 2 3 1",
                                      "4.0.0.1:6346 1 2 0 0 0", "4.0.0.2:6346 1 2 0 0 0",
                                      "4.0.0.3:6346 1 2 0 0 0", "4.0.0.4:6346 1 2 0 0 0",
                                      "4.0.0.5:6346 1 2 0 0 0", "4.0.0.6:6346 1 2 0 0 0",
                                      "4.0.0.8:6346 1 2 0 0 0"));
  EXPECT_EQ(rig.form().lcache.cell_tooltip(2, 1), "4.0.0.7:6347  host7.example");
  rig.form().show_dns.click();
  EXPECT_EQ(rig.form().lcache.cell(2, 1), "host7.example:6347");
  EXPECT_EQ(rig.form().lcache.cell(1, 1), "5.6.7.8:6347");
  rig.servent->shutdown();
  EXPECT_THAT(rig.host.files().content(kCacheFileName),
              testing::HasSubstr("\r\n1,\"5.6.7.8\",6347,\"?\",0,0,#2026-11-21 09:00:01#,"
                                 "#1899-12-30 00:00:00#\r\n"
                                 "2,\"4.0.0.7\",6347,\"host7.example\",32767,32767000,"
                                 "#2026-11-21 09:00:01#,#2000-06-29 01:02:03#\r\n3,"));
}

TEST(HostCache, ShowsPongsWithinASecondThoughTheyKeepComing) {
  CacheRig rig(some_hosts(1));
  for (int i = 2; i <= 12; ++i) {
    rig.send_pong({4, 0, 0, i}, 1);
    rig.world.run_for(95);
  }
  EXPECT_GE(rig.form().lcache.rows(), 10U);
  rig.world.run_for(1000);
  EXPECT_EQ(rig.form().lcache.rows(), 12U);
}

TEST(HostCache, ShowsAsManyRowsAsTheSettingAllows) {
  CacheRig rig(some_hosts(150));
  struct Case {
    const char* most;
    std::size_t rows;
  };
  for (const Case& c : {Case{"150", 150}, Case{"7", 7}, Case{"0", 0}, Case{"-3", 0},
                        Case{"many", 0}, Case{"1e999", 149}}) {
    rig.form().cachemax_config.set_text(c.most);
    rig.send_pong({4, 0, 0, 1}, 1);
    if (c.rows == 149) rig.form().remove_cache.click();
    rig.world.run_for(1000);
    EXPECT_EQ(rig.form().lcache.rows(), c.rows) << c.most;
  }
}

TEST(HostCache, FilterIsEditedByTheDropDownList) {
  CacheRig rig;
  ComboList& filter = rig.form().cachefilter_config;
  const auto pongs = [&] {
    for (const int last : {1, 12, 2}) rig.send_pong({4, 0, 0, last}, 1);
    rig.send_pong({192, 168, 0, 5}, 1);
    rig.world.run_for(1000);
    return rig.hosts();
  };
  filter.enter("4.0.0.1");
  EXPECT_EQ(filter.text(), "");
  filter.enter("");
  EXPECT_EQ(rig.form().totalfilter_config.text(), "19");
  EXPECT_THAT(pongs(), ElementsAre("4.0.0.2:6347"));
  filter.press_delete(19);
  EXPECT_EQ(rig.form().totalfilter_config.text(), "18");
  EXPECT_THAT(pongs(), ElementsAre("4.0.0.2:6347", "4.0.0.12:6347", "4.0.0.1:6347"));
  filter.enter("4.");
  EXPECT_EQ(rig.hosts().size(), 3U) << "what is there stays";
}

TEST(HostCache, RemovesTheSelectedRowElseTheFirst) {
  CacheRig rig(some_hosts(4));
  Button& remove = rig.form().remove_cache;
  remove.click();
  EXPECT_THAT(rig.hosts(), ElementsAre("4.0.0.2:6346", "4.0.0.3:6346", "4.0.0.4:6346"));
  rig.form().lcache.select(2);
  remove.click();
  EXPECT_THAT(rig.hosts(), ElementsAre("4.0.0.2:6346", "4.0.0.4:6346"));
  EXPECT_EQ(rig.form().lcache.selected(), 2U) << "the next one takes its place";
  rig.send_pong({5, 0, 0, 1}, 1);  // moves the rows before the list is shown again
  remove.click();
  EXPECT_THAT(rig.hosts(), ElementsAre("5.0.0.1:6347", "4.0.0.2:6346"));
  for (int i = 0; i < 3; ++i) remove.click();
  EXPECT_THAT(rig.hosts(), ElementsAre());
}

TEST(HostCache, IsClearedWhenThePersonSaysYes) {
  CacheRig rig(some_hosts(3));
  SimScreen& screen = rig.host.screen();
  screen.answer_yes = false;
  rig.form().clear_cache.click();
  EXPECT_EQ(rig.form().lcache.rows(), 3U);
  ASSERT_EQ(screen.boxes.size(), 1U);
  EXPECT_EQ(screen.boxes[0].title, "Clear Cache");
  EXPECT_EQ(screen.boxes[0].text,
            "This will clear the cache host file.\n"
            "Make sure you have some IPs, or are connected to a host.\n"
            "Are You Sure?");
  screen.answer_yes = true;
  rig.form().clear_cache.click();
  EXPECT_EQ(rig.form().lcache.rows(), 0U);
  EXPECT_EQ(rig.host.files().content(kCacheFileName), some_hosts(3)) << "the file is for the end";
  rig.servent->shutdown();
  EXPECT_EQ(rig.host.files().content(kCacheFileName), some_hosts(0));
}

TEST(HostCache, SaysAtTheStartWhatWasWrongWithItsFile) {
  CacheRig rig(some_hosts(2) + "x");
  EXPECT_EQ(rig.status_bar(), "load_shared: No such file or directory");
  std::string short_file = some_hosts(2);
  short_file.resize(short_file.size() - 20);
  CacheRig cut(short_file);
  EXPECT_EQ(cut.status_bar(),
            "load_cache: Input past end of file; load_shared: No such file or directory");
  EXPECT_THAT(cut.hosts(), ElementsAre("4.0.0.1:6346"));
}

TEST(HostCache, AFullDiskAtTheEndIsToldAndLeavesTheOldFile) {
  CacheRig rig(some_hosts(2));
  rig.send_pong({5, 6, 7, 8}, 1);
  rig.host.files().set_capacity(100);
  rig.servent->shutdown();
  const auto& boxes = rig.host.screen().boxes;
  ASSERT_EQ(boxes.size(), 1U);
  EXPECT_EQ(boxes[0].icon, BoxIcon::critical);
  EXPECT_EQ(boxes[0].title, "Problems saving Cache list");
  EXPECT_EQ(boxes[0].text, "save_cache: No space left on device");
  EXPECT_EQ(rig.host.files().content(kCacheFileName), some_hosts(2));
  EXPECT_EQ(rig.host.screen().tray_tip, "") << "the shutdown went on";
}

}  // namespace
}  // namespace velmora::sim
