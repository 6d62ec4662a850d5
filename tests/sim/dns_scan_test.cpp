// The scan of the host cache for names, step by step in virtual time.
#include <functional>

#include "dns_rig.h"

namespace velmora::sim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr LocalTime kNow{2000, 6, 30, 14, 5, 0};
const char* const kAskForServer = "Enter your DNS server's IP";

struct DnsScanTest : testing::Test, DnsRig {
  void run_step() { world.run_for(500); }
  DnsScan scan{loop, form, cache, lookups, log};
};

TEST_F(DnsScanTest, NamesMarksAndDatesOneRowAStep) {
  fill({"1.1.1.1", "2.2.2.2 old.example", "3.3.3.3", "4.4.4.4"});
  dns.script_name("1.1.1.1", "one.example", 100);
  dns.script_name("2.2.2.2", "two.example");
  dns.script("3.3.3.3", kDnsNoRecord);
  dns.script_name("4.4.4.4", "x");  // too short to count as a name
  form.StartDNS.click();
  world.run_for(499);
  EXPECT_THAT(dns.queries(), IsEmpty());
  world.run_for(1);
  EXPECT_EQ(status(), "Resolving IP: 1.1.1.1\rWaiting for DNS server...\rNum: 1 of 4");
  world.run_for(100);
  EXPECT_EQ(status(), "Resolving IP: 1.1.1.1\rone.example\rNum: 1 of 4");
  EXPECT_EQ(cache.row(1).date_dns, kNow);
  run_step();  // the steps are 500 ms apart from the answer on
  EXPECT_EQ(status(), "Resolving IP: 2.2.2.2\rWaiting for DNS server...\rNum: 2 of 4");
  EXPECT_EQ(form.dns_progress.text(), "2 of 4 hosts, 2.2.2.2");
  EXPECT_EQ(form.dns_progress.done(), 1U);
  EXPECT_EQ(form.dns_progress.total(), 4U);
  world.run_for(502);
  EXPECT_EQ(status(), "Resolving IP: 3.3.3.3\r-- No DNS record --\rNum: 3 of 4");
  world.run_for(502);
  world.run_for(502);
  EXPECT_EQ(status(), "3 IPs on the last scan. Done!");
  EXPECT_FALSE(form.dns_progress.running());
  EXPECT_THAT(cached_names(), ElementsAre("one.example", "two.example", "??", "??"));
  EXPECT_THAT(dns.addresses_asked(), ElementsAre("1.1.1.1", "2.2.2.2", "3.3.3.3", "4.4.4.4"));
  EXPECT_EQ(dns.queries()[0].server, "10.0.0.53");

  form.StartDNS.click();  // all are dated
  run_step();
  EXPECT_EQ(status(), "0 IPs on the last scan. Done!");
  world.run_for(60'000);
  EXPECT_THAT(dns.queries(), SizeIs(4));
}

TEST(DnsScan, ANameIsGoodForTenDays) {
  struct Case {
    LocalTime date;
    std::size_t asked;
  };
  // The tick comes half a second after 14:05:00, so the cutoff is 14:05:00 ten days before.
  for (const Case& given : {Case{{2000, 6, 20, 14, 5, 0}, 1}, Case{{2000, 6, 20, 14, 5, 1}, 0},
                            Case{{2000, 6, 19, 14, 5, 0}, 1}}) {
    DnsRig rig;
    const DnsScan scan(rig.loop, rig.form, rig.cache, rig.lookups, rig.log);
    rig.fill({"1.1.1.1 ??"}, given.date);
    rig.form.StartDNS.click();
    rig.world.run_for(510);
    EXPECT_THAT(rig.dns.queries(), SizeIs(given.asked)) << given.date.day << given.date.second;
  }
}

TEST_F(DnsScanTest, TheFifthTimeoutWithoutASuccessEndsIt) {
  fill({"1.1.1.1", "2.2.2.2", "3.3.3.3", "4.4.4.4", "5.5.5.5", "6.6.6.6"});
  dns.script_others(kDnsTimedOut, kDnsTimeoutMs);
  form.StartDNS.click();
  world.run_for(500 + 5000);
  EXPECT_EQ(status(), "Skipping IP, trying next IP 1 The DNS server did not answer in time");
  EXPECT_EQ(cache.row(1).host_name, "??");
  EXPECT_EQ(cache.row(1).date_dns, (LocalTime{2000, 6, 30, 14, 5, 5}));
  world.run_for(2999);
  EXPECT_THAT(dns.queries(), SizeIs(1));
  world.run_for(1);  // 3 seconds after a time-out
  EXPECT_THAT(dns.queries(), SizeIs(2));
  world.run_for(60'000);
  EXPECT_EQ(status(), "The DNS server did not answer in time 25324");
  EXPECT_THAT(dns.queries(), SizeIs(5));
  EXPECT_EQ(cache.row(5).host_name, "?");

  // The next start asks for the same row, and the count stands until a success.
  dns.script_name("5.5.5.5", "five.example");
  form.StartDNS.click();
  world.run_for(60'000);
  EXPECT_THAT(cached_names(), ElementsAre("??", "??", "??", "??", "five.example", "??"));
  EXPECT_EQ(status(), "1 IPs on the last scan. Done!");
}

TEST_F(DnsScanTest, AnotherFailureEndsItAtItsRow) {
  fill({"1.1.1.1", "2.2.2.2"});
  dns.script_name("1.1.1.1", "one.example");
  dns.script("2.2.2.2", kDnsRefused);
  form.StartDNS.click();
  world.run_for(10'000);
  EXPECT_EQ(status(), "The DNS server refused 25305");
  EXPECT_FALSE(form.dns_progress.running());
  EXPECT_THAT(cached_names(), ElementsAre("one.example", "?"));
  EXPECT_EQ(cache.row(2).date_dns, kNever);
  form.StartDNS.click();
  world.run_for(10'000);
  EXPECT_THAT(dns.addresses_asked(), ElementsAre("1.1.1.1", "2.2.2.2", "2.2.2.2"));
}

TEST_F(DnsScanTest, StopsAtTheNextStepAndBeginsAtTheTop) {
  fill({"1.1.1.1", "2.2.2.2"});
  dns.script_name("1.1.1.1", "one.example", 100);
  form.StartDNS.click();
  world.run_for(550);
  form.stopDNS.click();
  form.StartDNS.click();  // under way: no second question
  world.run_for(10);
  form.stopDNS.click();
  world.run_for(540);
  EXPECT_EQ(cache.row(1).host_name, "one.example");
  run_step();
  EXPECT_EQ(status(), "1 IPs on the last scan. Done!");
  world.run_for(10'000);
  EXPECT_THAT(dns.addresses_asked(), ElementsAre("1.1.1.1"));
}

TEST_F(DnsScanTest, WithoutAServerNobodyIsAsked) {
  fill({"1.1.1.1"});
  form.dns_ser.set_text("");
  form.StartDNS.click();
  world.run_for(10'000);
  EXPECT_EQ(status(), kAskForServer);
  form.dns_ser.set_text("nobody");
  form.StartDNS.click();
  world.run_for(10'000);
  EXPECT_EQ(status(), "Not a DNS server's address 25301");
  form.dns_ser.set_text("10.0.0.53");
  form.StartDNS.click();
  form.dns_ser.set_text("");  // before the first step
  world.run_for(10'000);
  EXPECT_FALSE(form.dns_progress.running());
  EXPECT_EQ(status(), kAskForServer);
  EXPECT_THAT(dns.queries(), IsEmpty());
  EXPECT_THAT(cached_names(), ElementsAre("?"));
}

// A row that moves while its question is under way is found by its address.
TEST(DnsScan, AnAnswerFindsItsRowWhereverItIs) {
  const auto names_after = [](const std::function<void(HostCache&)>& change) {
    DnsRig rig;
    const DnsScan scan(rig.loop, rig.form, rig.cache, rig.lookups, rig.log);
    rig.fill({"1.1.1.1 one.example", "2.2.2.2", "3.3.3.3 three.example"}, kNow);
    rig.dns.script_name("2.2.2.2", "two.example", 1000);
    rig.form.StartDNS.click();
    rig.world.run_for(600);
    change(rig.cache);
    rig.world.run_for(10'000);
    EXPECT_THAT(rig.status(), HasSubstr("Done!"));
    EXPECT_THAT(rig.log.lines, IsEmpty());
    return rig.cached_names();
  };
  const auto pong = [](HostCache& cache, const char* address) {
    Pong fields;
    fields.address = address;
    cache.set_cache_stat({}, fields, 1);
  };
  EXPECT_THAT(names_after([&](HostCache& cache) { pong(cache, "2.2.2.2"); }),
              ElementsAre("two.example", "one.example", "three.example"));
  EXPECT_THAT(names_after([&](HostCache& cache) { pong(cache, "9.9.9.9"); }),
              ElementsAre("?", "one.example", "two.example", "three.example"));
  EXPECT_THAT(names_after([](HostCache& cache) { cache.remove(1); }),
              ElementsAre("two.example", "three.example"));
  EXPECT_THAT(names_after([](HostCache& cache) { cache.remove(2); }),
              ElementsAre("one.example", "three.example"));
  EXPECT_THAT(names_after([](HostCache& cache) { cache.clear(); }), IsEmpty());
}

TEST_F(DnsScanTest, EveryRowOfAnAddressThatIsThereTwiceIsNamed) {
  fill({"1.1.1.1", "1.1.1.1"});
  dns.script_name("1.1.1.1", "one.example");
  form.StartDNS.click();
  world.run_for(10'000);
  EXPECT_THAT(cached_names(), ElementsAre("one.example", "one.example"));
}

}  // namespace
}  // namespace velmora::sim
