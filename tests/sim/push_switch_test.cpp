// The switch "push", on and off: this servent asked to offer a file, and this servent asking.
#include <gtest/gtest.h>

#include "net/address_filter.h"
#include "overlay_chain.h"
#include "servent_rig.h"

namespace velmora::sim {
namespace {

enum : int { kPushCode = 64, kQueryCode = 128, kHitCode = 129 };
const std::string kTarget = "1.2.3.4";
constexpr std::uint16_t kTargetPort = 50'000;

std::string hex(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    char two[3];
    std::snprintf(two, sizeof two, "%02X", static_cast<unsigned char>(c));
    text += two;
  }
  return text;
}

// Asked by `peer`, it shares one file; whoever it connects to is kept.
class AskedRig : public ServentRig {
 public:
  explicit AskedRig(const std::string& push)
      : ServentRig({{"push_behaviour", push}, {"max_in_host", "9"}}, 1,
                   [](SimHost& of) {
                     of.files().put("/share/song.txt", std::string(9000, 's'));
                     return of.platform();
                   }),
        peer(connected_peer("10.0.0.2")) {
    world.add_host(kTarget);
    world.listen_raw(kTarget, kTargetPort, [this](RawPeer& one) { reached.push_back(&one); });
    form().upload_config.enter("/share");
    form().scan_config.click();
    world.run_for(1000);
    peer->send(descriptor("q", kQueryCode, 1, 0, std::string("\0\0song\0", 7)));
    world.run_for(5);
    const std::string hit = peer->take();
    servent_guid = hit.substr(hit.size() - 16);
    world.record();
  }

  void push(const std::string& whom, std::uint32_t file, const std::string& address) {
    std::string four_bytes;
    for (std::size_t at = 0; at < address.size(); at = address.find('.', at) + 1) {
      four_bytes += static_cast<char>(std::stoi(address.substr(at)));
      if (address.find('.', at) == std::string::npos) break;
    }
    peer->send(descriptor("p", kPushCode, 4, 0,
                          whom + little_endian(file, 4) + four_bytes + std::string("\x50\xC3", 2)));
    world.run_for(5);
  }
  std::size_t tries() const {
    std::size_t count = 0;
    for (const TranscriptEntry& entry : world.transcript()) {
      count += entry.kind == "connecting" && entry.host == "10.0.0.1" ? 1U : 0U;
    }
    return count;
  }

  std::unique_ptr<RawPeer> peer;
  std::vector<RawPeer*> reached;
  std::string servent_guid;
};

TEST(PushSwitch, AskedItConnectsAndOffersAndServes) {
  for (const bool on : {false, true}) {
    AskedRig rig(on ? "on" : "off");
    rig.push(rig.servent_guid, 1, kTarget);
    EXPECT_EQ(rig.counter(rig.form().push_stat), "1 / 0");
    ASSERT_EQ(rig.reached.size(), on ? 1U : 0U);
    if (!on) continue;
    RawPeer& asker = *rig.reached.front();
    EXPECT_EQ(asker.take(), "GIV 1:" + hex(rig.servent_guid) + "/song.txt\n\n");
    asker.send("GET /get/1/song.txt HTTP:/1.0\r\nRange: bytes=0-9000\r\n\r\n");
    rig.world.run_for(5000);
    EXPECT_TRUE(asker.received().starts_with("HTTP 200 OK\r\n"));
    EXPECT_TRUE(asker.received().ends_with(std::string(9000, 's')));
    EXPECT_EQ(rig.form().lupload.cell(1, 3), "Done");
    EXPECT_EQ(rig.form().lupload.cell(1, 4), kTarget);
  }
}

TEST(PushSwitch, APushOfNoConsequence) {
  AskedRig rig("on");
  rig.push("not this servent", 1, kTarget);
  rig.push(rig.servent_guid, 0, kTarget);
  rig.push(rig.servent_guid, 2, kTarget);
  rig.push(rig.servent_guid, 0xFFFFFFFF, kTarget);
  rig.push(rig.servent_guid, 1, "10.0.0.3");  // the filter keeps private addresses out
  EXPECT_EQ(rig.tries(), 0U);
  EXPECT_EQ(rig.counter(rig.form().push_stat), "5 / 0");
  EXPECT_EQ(rig.peer->take(), "");
}

TEST(PushSwitch, NobodyMakesItConnectAtWill) {
  AskedRig rig("on");
  for (int i = 0; i < 6; ++i) rig.push(rig.servent_guid, 1, kTarget);
  EXPECT_EQ(rig.tries(), 4U) << "to one address";
  for (int i = 0; i < 6; ++i) rig.push(rig.servent_guid, 1, "1.9.9." + std::to_string(i));
  EXPECT_EQ(rig.tries(), 8U) << "at a time";
  rig.world.run_for(4000);
  rig.push(rig.servent_guid, 1, "1.9.9.4");
  EXPECT_EQ(rig.tries(), 9U);
  rig.push(rig.servent_guid, 1, kTarget);
  EXPECT_EQ(rig.tries(), 9U);
  for (int i = 0; i < 6; ++i) {
    rig.peer->send(descriptor("ping", 0, 1, 0, ""));
    rig.world.run_for(10'000);
  }
  // Those that are refused make room at once; the minute's number is what stops them.
  for (int i = 0; i < 80; ++i) {
    const std::string address = "1.8.8." + std::to_string(i);
    rig.world.add_host(address);
    rig.push(rig.servent_guid, 1, address);
  }
  EXPECT_EQ(rig.tries(), 9U + 64U);
}

// Whoever sends a push must not make this servent speak to its own machine or network.
TEST(PushSwitch, AddressesThatOnlyAStrangerWouldName) {
  FilterArray none;
  FilterArray some(1);
  some.resize(1);
  some.at(1) = "192.168.";
  Behaviour local;
  local.local_network = true;
  const struct {
    const FilterArray& filter;
    const char* address;
    const char* own;
    const Behaviour& behaviour;
    bool kept_out;
  } cases[] = {
      {none, "127.0.0.1", "1.2.3.4", kClassic, true},
      {none, "0.0.0.0", "1.2.3.4", kClassic, true},
      {none, "127.0.0.2", "127.0.0.1", kClassic, false},
      {none, "169.254.1.1", "10.0.0.1", local, true},
      {none, "169.254.1.1", "169.254.2.2", local, false},
      {none, "1.127.0.1", "1.2.3.4", kClassic, false},
      {some, "192.168.1.1", "192.168.1.2", kClassic, true},
      {some, "192.168.1.1", "1.2.3.4", local, true},
      {some, "192.168.1.1", "10.0.0.1", local, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(is_filtered_for_strangers(c.filter, c.address, c.own, c.behaviour), c.kept_out)
        << c.address << " asks " << c.own;
  }
  AskedRig rig("on");
  rig.push(rig.servent_guid, 1, "127.0.0.1");
  EXPECT_EQ(rig.tries(), 0U);
}

// What this servent asks for: the file 7 of a servent whose hit came from `peer`, at an address
// that refuses or does not answer.
class AskingRig : public ServentRig {
 public:
  AskingRig(const std::string& push, const std::string& address_bytes)
      : ServentRig({{"push_behaviour", push},
                    {"max_in_host", "9"},
                    {"ttlMax_config", "6"},
                    {"down_config", "/down"}},
                   1,
                   [](SimHost& of) {
                     of.files().make_folder("/down");
                     return of.platform();
                   }),
        peer(connected_peer("10.0.0.2")) {
    std::string payload = std::string("\x01\xC9\x18", 3) + address_bytes + little_endian(56, 4);
    payload +=
        little_endian(7, 4) + little_endian(10, 4) + "song.txt" + std::string(2, '\0') + kServent;
    peer->send(descriptor("h", kHitCode, 4, 0, payload));
    world.run_for(1100);
    form().lfound.activate(1);
    started_ms = world.now_ms();
    form().resume_down.click();
  }

  std::string status() { return form().ldown.cell(1, 3); }
  // When the entry's status became this, in ms after the start.
  std::int64_t time_of(const std::string& wanted) {
    EXPECT_TRUE(world.run_until(
        [&] {
          if (world.now_ms() >= next_ping_ms) {
            peer->send(descriptor("ping", 0, 1, 0, ""));
            next_ping_ms = world.now_ms() + 5000;
          }
          return status() == wanted;
        },
        60'000))
        << status();
    return world.now_ms() - started_ms;
  }
  std::unique_ptr<RawPeer> offer(const std::string& text) {
    auto one = world.connect_raw("10.0.0.3", "10.0.0.1", 6345);
    one->send(text);
    world.run_for(5);
    return one;
  }
  // The pushes among what the peer received.
  int pushes() {
    int count = 0;
    const std::string& bytes = peer->received();
    for (std::size_t at = 0; at + 23 <= bytes.size();) {
      if (bytes[at + 16] == kPushCode) ++count;
      at += 23 + static_cast<unsigned char>(bytes[at + 19]);
    }
    return count;
  }

  static inline const std::string kServent = "a servent beyond";
  static inline const std::string kLine = "GIV 7:" + hex(kServent) + "/song.txt\n\n";
  std::unique_ptr<RawPeer> peer;
  std::int64_t started_ms = 0;
  std::int64_t next_ping_ms = 0;
};

const std::string kRefusing("\x0A\0\0\x04", 4);
const std::string kSilent("\x01\x09\x09\x09", 4);

TEST(PushSwitch, AskingItSendsOnePushAndWaits) {
  for (const std::string& address : {kRefusing, kSilent}) {
    AskingRig rig("on", address);
    const std::int64_t asked_ms = rig.time_of("Asked to push");
    EXPECT_EQ(asked_ms, address == kSilent ? 4000 : 2);
    rig.world.run_for(2);
    const std::string bytes = rig.peer->received();
    ASSERT_EQ(rig.pushes(), 1);
    const std::string payload =
        AskingRig::kServent + std::string("\x07\0\0\0\x0A\0\0\x01\xC9\x18", 10);
    EXPECT_EQ(bytes.substr(bytes.rfind(payload) - 7),
              std::string("\x40\x06\0\x1A\0\0\0", 7) + payload);
    EXPECT_EQ(rig.counter(rig.form().push_stat), "0 / 1");
    EXPECT_EQ(rig.time_of("Not accepted"), asked_ms + 30'000);
    EXPECT_EQ(rig.pushes(), 1);
    EXPECT_TRUE(rig.offer(AskingRig::kLine)->closed_by_peer()) << "nobody waits any more";
  }
}

TEST(PushSwitch, ClassicItDoesNotAsk) {
  AskingRig rig("off", kRefusing);
  EXPECT_EQ(rig.time_of("Not accepted"), 4000);
  EXPECT_EQ(rig.pushes(), 0);
  auto offered = rig.offer(AskingRig::kLine);
  EXPECT_FALSE(offered->closed_by_peer());
  EXPECT_TRUE(rig.world.run_until([&] { return offered->closed_by_peer(); }, 30'100));
  EXPECT_EQ(rig.form().lupload.cell(1, 3), "No response");
}

TEST(PushSwitch, TheOfferThatItWaitsForIsTaken) {
  AskingRig rig("on", kRefusing);
  rig.time_of("Asked to push");
  const std::string other = "GIV 8:" + AskingRig::kLine.substr(6);
  for (const std::string& wrong :
       {other, "GIV 7:" + hex("another servent!") + "/song.txt\n\n", std::string("GIV 7\n\n")}) {
    EXPECT_TRUE(rig.offer(wrong)->closed_by_peer());
    EXPECT_EQ(rig.form().lupload.cell(1, 3), "Not accepted");
    EXPECT_EQ(rig.status(), "Asked to push");
  }
  auto offered = rig.offer(AskingRig::kLine.substr(0, 20));
  EXPECT_EQ(offered->received(), "");
  offered->send(AskingRig::kLine.substr(20));
  rig.world.run_for(5);
  EXPECT_TRUE(offered->take().starts_with("GET /get/7/song.txt HTTP:/1.0\r\n"));
  EXPECT_EQ(rig.status(), "Connected");
  EXPECT_EQ(rig.form().lupload.cell(1, 3), "Offered a file");
  EXPECT_TRUE(rig.offer(AskingRig::kLine)->closed_by_peer()) << "taken already";
  offered->send("HTTP 200 OK\r\nContent-length: 10\r\n\r\n");
  rig.world.run_for(10);
  offered->send("0123456789");
  rig.world.run_for(10);
  EXPECT_EQ(rig.status(), "Done");
  EXPECT_EQ(rig.host.files().content("/down/song.txt"), "0123456789");
}

// One that offers and then says nothing does not hold the entry.
TEST(PushSwitch, AnOfferThatSendsNothingEndsAsAConnectionDoes) {
  AskingRig rig("on", kRefusing);
  rig.time_of("Asked to push");
  auto offered = rig.world.connect_raw("10.0.0.3", "10.0.0.1", 6345);
  offered->send(AskingRig::kLine);
  const std::int64_t taken_ms = rig.time_of("Connected");
  EXPECT_EQ(rig.time_of("Not accepted"), taken_ms + 4000);
  EXPECT_EQ(rig.pushes(), 1);
}

TEST(PushSwitch, WithNoAddressToTellItDoesNotAsk) {
  AskingRig rig("on", kSilent);
  rig.form().forceIP_config.set_text("my-host.example");
  EXPECT_EQ(rig.time_of("Not accepted"), 4000);
  EXPECT_EQ(rig.pushes(), 0);
  EXPECT_EQ(rig.counter(rig.form().push_stat), "0 / 0");
  EXPECT_EQ(rig.logged("Error: send_push Type mismatch"), 1);
}

TEST(PushSwitch, WithoutAWayItIsAsEver) {
  AskingRig rig("on", kSilent);
  rig.peer->close();
  rig.world.run_for(3999);
  EXPECT_EQ(rig.status(), "Requesting to Connect");
  rig.world.run_for(1);
  EXPECT_EQ(rig.status(), "Not accepted");
}

// The sharing servent tells an address where nobody is; the one between passes the push on.
TEST(PushSwitch, AFileOfAServentThatCannotBeReached) {
  for (const bool on : {false, true}) {
    const OverlayChain::Fields fields = {{"relay_behaviour", "on"},
                                         {"push_behaviour", on ? "on" : "off"}};
    OverlayChain::Fields hidden = fields;
    hidden.emplace_back("forceIP_config", "1.0.0.99");
    OverlayChain chain({fields, fields, hidden});
    ASSERT_EQ(chain.search("song").first, "1");
    chain.form(0).lfound.activate(1);
    chain.form(0).resume_down.click();
    chain.world.run_for(20'000);
    EXPECT_EQ(chain.form(0).ldown.cell(1, 3), on ? "Done" : "Not accepted");
    EXPECT_EQ(chain.form(1).push_stat.text(), on ? "1 / 1" : "0 / 0");
    if (on) {
      EXPECT_EQ(chain.hosts[0]->files().content("/down/song.txt"),
                std::string(OverlayChain::kSongSize, 's'));
    }
  }
}

}  // namespace
}  // namespace velmora::sim
