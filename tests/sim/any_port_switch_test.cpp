// The switch "Any port": ports of 32768 and more in pongs and query hits.
#include <gmock/gmock.h>

#include "servent_rig.h"

namespace velmora::sim {
namespace {

std::string with_port(std::string before, int port) {
  before += static_cast<char>(port & 255);
  before += static_cast<char>(port >> 8);
  return before;
}

TEST(AnyPortSwitch, PongsAndQueryHits) {
  struct Case {
    int port;
    bool on;
    const char* shown;  // empty: not understood
  };
  const Case cases[] = {{6346, false, "6346"},  {6346, true, "6346"}, {32767, false, "32767"},
                        {32767, true, "32767"}, {32768, false, ""},   {32768, true, "32768"},
                        {40000, true, "40000"}, {65535, false, ""},   {65535, true, "65535"},
                        {0, true, "0"}};
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.port) + (c.on ? " on" : " off"));
    ServentRig rig({{"max_in_host", "20"}, {"any_port_behaviour", c.on ? "on" : "off"}});
    const auto peer = rig.connected_peer("10.0.0.2");
    const std::string address("\x18\x00\x00\x09", 4);
    peer->send(descriptor("pong", 1, 3, 0,
                          with_port("", c.port) + address + std::string("\5\0\0\0\x64\0\0\0", 8)));
    peer->send(descriptor("hit", 129, 3, 0,
                          with_port("\1", c.port) + address + std::string("\x38\0\0\0", 4) +
                              std::string("\1\0\0\0\2\0\0\0song.txt\0\0", 18) +
                              std::string(16, 's')));
    rig.world.run_for(2000);
    const bool understood = *c.shown != '\0';
    const std::string location = std::string("24.0.0.9:") + c.shown;
    EXPECT_EQ(rig.logged("Overflow"), understood ? 0 : 2);
    ASSERT_EQ(rig.form().lcache.rows(), understood ? 1U : 0U);
    ASSERT_EQ(rig.form().lfound.rows(), understood ? 1U : 0U);
    if (!understood) continue;
    EXPECT_THAT(rig.cell(rig.form().lcache, 1, 1), testing::HasSubstr(location));
    EXPECT_THAT(rig.cell(rig.form().lfound, 1, 4), testing::HasSubstr(location));
  }
}

// What was learnt is connected to, and stays as it is when the switch goes off.
TEST(AnyPortSwitch, TheCacheKeepsAndUsesTheWholePort) {
  ServentRig rig({{"max_in_host", "20"}, {"any_port_behaviour", "on"}});
  rig.world.add_host("24.0.0.9");
  int accepted = 0;
  rig.world.listen_raw("24.0.0.9", 50000, [&](RawPeer&) { ++accepted; });
  const auto peer = rig.connected_peer("10.0.0.2");
  peer->send(descriptor("pong", 1, 3, 0,
                        with_port("", 50000) + std::string("\x18\0\0\x09\0\0\0\0\0\0\0\0", 12)));
  rig.world.run_for(2000);
  rig.form().lcache.activate(1);
  rig.world.run_for(10);
  EXPECT_EQ(accepted, 1);

  rig.servent->save();
  const std::string saved = rig.host.files().content("Velmora_cache.dat");
  ServentRig classic({}, 1, [&](SimHost& host) {
    host.files().put("Velmora_cache.dat", saved);
    return host.platform();
  });
  EXPECT_THAT(classic.cell(classic.form().lcache, 1, 1), testing::HasSubstr("24.0.0.9:50000"));
}

}  // namespace
}  // namespace velmora::sim
