// Names of addresses: the cache, the look-ups, and the pass that fills them in.
#include "dns_rig.h"
#include "servent_rig.h"

namespace velmora::sim {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

struct DnsNamesTest : testing::Test, DnsRig {
  std::string resolved(const std::string& address) {
    std::string name = "(no call)";
    names.dns_resolve(address, [&](const std::string& found) { name = found; });
    world.run_for(6000);
    return name;
  }
};

TEST_F(DnsNamesTest, CacheIsReadAndWrittenByTheFirstRowOfAnAddress) {
  fill({"1.1.1.1 one.example", "2.2.2.2", "2.2.2.2"});
  EXPECT_EQ(names.dns_from_cache("1.1.1.1"), "one.example");
  EXPECT_EQ(names.dns_from_cache("9.9.9.9"), "?");
  names.dns_to_cache("2.2.2.2", "two.example");
  names.dns_to_cache("9.9.9.9", "nine.example");
  EXPECT_THAT(cached_names(), ElementsAre("one.example", "two.example", "?"));
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(DnsNamesTest, TheSameAddressTwiceInARowIsAnsweredFromMemory) {
  fill({"1.1.1.1", "2.2.2.2"});
  EXPECT_EQ(names.dns_from_cache("1.1.1.1"), "?");
  names.dns_to_cache("1.1.1.1", "one.example");
  EXPECT_EQ(names.dns_from_cache("1.1.1.1"), "?");
  names.dns_from_cache("2.2.2.2");
  EXPECT_EQ(names.dns_from_cache("1.1.1.1"), "one.example");
}

TEST_F(DnsNamesTest, OutcomesOfALookup) {
  fill({"1.1.1.1", "2.2.2.2", "3.3.3.3", "4.4.4.4", "5.5.5.5", "6.6.6.6"});
  const std::string hostile = "\x1B[2J<b>\r\n" + std::string(240, '"');
  dns.script_name("1.1.1.1", hostile);
  dns.script("2.2.2.2", kDnsNoHost);
  dns.script("3.3.3.3", kDnsNoRecord);
  dns.script("4.4.4.4", kDnsNoName);
  dns.script_silence("5.5.5.5");
  dns.script("6.6.6.6", kDnsServerFailed);
  EXPECT_EQ(resolved("1.1.1.1"), hostile);
  for (const char* address : {"2.2.2.2", "3.3.3.3", "4.4.4.4", "5.5.5.5"}) {
    EXPECT_EQ(resolved(address), "??") << address;
  }
  EXPECT_EQ(resolved("6.6.6.6"), "Error resolving IP");
  EXPECT_THAT(cached_names(), ElementsAre(hostile, "?", "?", "?", "?", "Error resolving IP"));

  form.dns_ser.set_text("");
  EXPECT_FALSE(names.dns_resolve("2.2.2.2", [](const std::string&) { FAIL(); }));
  world.run_for(6000);
  EXPECT_THAT(dns.queries(), SizeIs(6));
}

TEST_F(DnsNamesTest, OneQueryAnAddressAndFourAtOnce) {
  dns.script_others(kDnsNoHost, 1000);
  int calls = 0;
  for (int round = 0; round < 3; ++round) {
    for (int i = 1; i <= 10; ++i) {
      names.dns_resolve("1.1.1." + std::to_string(i), [&](const std::string&) { ++calls; });
    }
  }
  EXPECT_EQ(calls, 0);
  world.run_for(2999);
  EXPECT_EQ(dns.under_way(), 2U);
  world.run_for(1);
  EXPECT_EQ(calls, 30);
  EXPECT_THAT(dns.queries(), SizeIs(10));
  EXPECT_EQ(dns.most_under_way(), 4U);

  for (std::size_t i = 0; i < kMostLookupsWaiting + 4; ++i) {
    EXPECT_TRUE(names.dns_resolve("2.2." + std::to_string(i), [](const std::string&) {}));
  }
  EXPECT_FALSE(names.dns_resolve("3.3.3.3", [](const std::string&) { FAIL(); }));
  EXPECT_THAT(log.lines, ElementsAre("dns_resolve: Out of memory"));
  lookups.cancel();
  EXPECT_EQ(dns.under_way(), 0U);
}

// A record as the pass sees it.
class Records : public NamedRecords {
 public:
  struct Record {
    std::string address;
    std::string host_name;
  };
  [[nodiscard]] std::size_t upper_bound() const override { return records.size(); }
  [[nodiscard]] const std::string* nameless_address(std::size_t index) const override {
    looks += 1;
    const Record& record = records[index - 1];
    return name_is_missing(record.host_name) ? &record.address : nullptr;
  }
  void set_host_name(std::size_t index, const std::string& name) override {
    records[index - 1].host_name = name;
  }
  void show_again() override { ++shown; }
  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const Record& record : records) found.push_back(record.host_name);
    return found;
  }

  std::vector<Record> records;
  mutable std::size_t looks = 0;
  int shown = 0;
};

struct DnsAutoUpdateTest : DnsNamesTest {
  DnsAutoUpdateTest() { update.start(); }
  Records first;
  Records second;
  DnsAutoUpdate update{loop, names, log, {&first, &second}};
};

TEST_F(DnsAutoUpdateTest, FillsMissingNamesEveryFiveSeconds) {
  fill({"1.1.1.1 cached.example", "2.2.2.2", "3.3.3.3 ??"});
  dns.script_name("2.2.2.2", "two.example", 100);
  dns.script_name("3.3.3.3", "three.example", 200);
  first.records = {{"1.1.1.1", "?"}, {"2.2.2.2", ""}, {"4.4.4.4", "kept.example"}};
  second.records = {{"2.2.2.2", "?"}, {"3.3.3.3", "?"}, {"5.5.5.5", "??"}, {"6.6.6.6", "?"}};
  world.run_for(4999);
  EXPECT_THAT(first.names(), ElementsAre("?", "", "kept.example"));
  world.run_for(2);
  EXPECT_THAT(first.names(), ElementsAre("cached.example", "", "kept.example"));
  world.run_for(1000);
  EXPECT_THAT(first.names(), ElementsAre("cached.example", "two.example", "kept.example"));
  EXPECT_THAT(second.names(), ElementsAre("two.example", "three.example", "??", "??"));
  EXPECT_THAT(cached_names(), ElementsAre("cached.example", "two.example", "three.example"));
  EXPECT_THAT(dns.addresses_asked(), ElementsAre("2.2.2.2", "3.3.3.3", "6.6.6.6"));
  EXPECT_GT(first.shown, 0);
  EXPECT_GT(second.shown, 0);

  second.records.push_back({"7.7.7.7", "?"});
  world.run_for(6000);
  EXPECT_EQ(second.records.back().host_name, "??");
}

TEST_F(DnsAutoUpdateTest, APassEndsBeforeTheNextBegins) {
  dns.script_others(kDnsTimedOut, kDnsTimeoutMs);
  for (int i = 1; i <= 8; ++i) first.records.push_back({"1.1.1." + std::to_string(i), "?"});
  world.run_for(5000 + 4999);
  EXPECT_THAT(dns.queries(), SizeIs(4));
  update.dns_auto_update();  // under way: nobody is asked twice
  world.run_for(4000);
  EXPECT_THAT(dns.queries(), SizeIs(8));
  EXPECT_THAT(first.names(), ElementsAre("??", "??", "??", "??", "?", "?", "?", "?"));
  world.run_for(2000);
  EXPECT_THAT(first.names(), Each("??"));
  EXPECT_EQ(dns.most_under_way(), 4U);
}

TEST_F(DnsAutoUpdateTest, RecordsMayGoWhileTheirAnswersAreUnderWay) {
  dns.script_name("1.1.1.1", "one.example", 1000);
  dns.script_name("2.2.2.2", "two.example", 1000);
  first.records = {{"1.1.1.1", "?"}, {"2.2.2.2", "?"}};
  world.run_for(5500);
  first.records = {{"2.2.2.2", "?"}};
  world.run_for(1500);
  EXPECT_THAT(first.names(), ElementsAre("two.example"));
}

// 200,000 records: a turn looks at a few of them, one pass asks a bounded number of questions, and
// walks are half a second apart however fast the answers come.
TEST_F(DnsAutoUpdateTest, AGreatManyRecordsAreWalkedInSlices) {
  constexpr std::size_t kMany = 200'000;
  for (std::size_t i = 0; i < kMany; ++i) {
    first.records.push_back({"1." + std::to_string(i % 20'000), "?"});
  }
  std::size_t most_looks = 0;
  std::size_t looks_before = 0;
  const auto watch = loop.make_timer(0, [&] {
    most_looks = std::max(most_looks, first.looks - looks_before);
    looks_before = first.looks;
  });
  world.run_for(4990);
  watch->set_enabled(true);
  ASSERT_TRUE(world.run_until([&] { return first.looks >= kMany; }, 1000));
  watch->set_enabled(false);
  EXPECT_LE(most_looks, 3 * kRecordsPerTurn);
  world.run_for(4500);
  EXPECT_THAT(dns.queries(), SizeIs(kMostAddressesPerPass));
  EXPECT_LE(first.looks, 12 * kMany);
  world.run_for(15'000);
  EXPECT_THAT(dns.queries(), SizeIs(20'000));
  EXPECT_THAT(first.names(), Each("??"));
}

TEST(ServentDns, ConnectionsGetTheirNamesAndAScanNamesTheCache) {
  ServentRig rig({{"dns_ser", "10.0.0.53"}, {"show_dns", "true"}});
  rig.host.dns().script_name("10.0.0.2", "peer.example");
  rig.host.dns().script_name("11.12.13.14", "cached.example");
  auto peer = rig.connected_peer("10.0.0.2");
  const std::string pong("\xCA\x18\x0B\x0C\x0D\x0E\1\0\0\0\1\0\0\0", 14);
  peer->send(descriptor("a", 0x01, 1, 0, pong));
  rig.form().StartDNS.click();
  rig.world.run_for(7000);
  EXPECT_EQ(rig.form().lHosts.cell(1, 1).substr(0, 13), "peer.example:");
  EXPECT_EQ(rig.form().dnsStat.text(), "1 IPs on the last scan. Done!");
  EXPECT_EQ(rig.form().lcache.cell(1, 1), "cached.example:6346");
  rig.servent->shutdown();
  const std::size_t asked = rig.host.dns().queries().size();
  rig.world.run_for(20'000);
  EXPECT_EQ(rig.host.dns().queries().size(), asked);
}

}  // namespace
}  // namespace velmora::sim
