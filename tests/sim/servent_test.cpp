// Start-up, shutdown and what belongs to the program as a whole.
#include <gmock/gmock.h>

#include <cerrno>

#include "servent_rig.h"

namespace velmora::sim {
namespace {

TEST(Servent, StartsOnceOnAProfile) {
  ServentRig rig;
  EXPECT_EQ(rig.host.screen().tray_tip, "Velmora");
  Servent second(rig.host.platform(), {});
  EXPECT_EQ(second.start(), Servent::Started::already_running);
  ASSERT_EQ(rig.host.screen().boxes.size(), 1U);
  EXPECT_EQ(rig.host.screen().boxes[0].title, "VelMora");
  EXPECT_EQ(rig.host.screen().boxes[0].text,
            "VelMora Program is Already Running\n\nCheck the System Tray");
  auto peer = rig.connected_peer("10.0.0.2");
  EXPECT_EQ(rig.host_status(1), "Connected");
  second.shutdown();
  EXPECT_TRUE(peer->connected());
}

TEST(Servent, KeepsSettingsOnlyThroughAnOrderlyEnd) {
  SimWorld world;
  SimHost& host = world.add_host("10.0.0.1");
  const auto run = [&](const char* typed, bool orderly) {
    Servent servent(host.platform(), {});
    EXPECT_EQ(servent.start(), Servent::Started::yes);
    std::string found = servent.form().max_down.text();
    servent.form().max_down.set_text(typed);
    if (orderly) servent.shutdown();
    return found;
  };
  EXPECT_EQ(run("7", true), "4");
  EXPECT_EQ(run("9", false), "7");
  EXPECT_EQ(run("8", true), "7");
  EXPECT_EQ(host.screen().tray_tip, "");
}

TEST(Servent, AStoredValueThatDoesNotConvertEndsTheLoading) {
  SimWorld world;
  SimHost& host = world.add_host("10.0.0.1");
  host.files().put("settings.toml",
                   "[config]\nlistenport = \"7000\"\n[upload]\nspeed = \"fast\"\nmax_in = \"9\"\n");
  Servent servent(host.platform(), {});
  EXPECT_EQ(servent.start(), Servent::Started::yes);
  EXPECT_EQ(servent.form().port_config.text(), "7000");
  EXPECT_THAT(host.files().content("settings.toml.bad"), testing::HasSubstr("max_in = \"9\""));
  EXPECT_EQ(servent.form().max_in_upload.text(), "4");
  EXPECT_THAT(servent.form().frmDebug.text(),
              testing::HasSubstr("load_settings: Type mismatch\r\n"));
}

TEST(Servent, ClosesEverySocketWhenItEnds) {
  ServentRig rig;
  auto peer = rig.connected_peer("10.0.0.2");
  auto client = rig.world.connect_raw("10.0.0.3", "10.0.0.1", 6345);
  rig.world.run_for(10);
  bool ended = false;
  rig.servent->on_ended = [&] { ended = true; };
  rig.form().mnuexit.click();
  EXPECT_FALSE(ended) << "a handler of the form does not end the program under itself";
  rig.world.run_for(10);
  EXPECT_TRUE(ended);
  EXPECT_TRUE(peer->closed_by_peer());
  EXPECT_TRUE(client->closed_by_peer());
  auto late = rig.world.connect_raw("10.0.0.4", "10.0.0.1", 6346);
  rig.world.run_for(10);
  EXPECT_FALSE(late->connected());
}

TEST(PictureGame, EndsTheProgramAtThe331stMove) {
  struct Case {
    int moves;
    bool third, text_shown;
    const char* text;
  };
  const Case table[] = {
      {200, false, false, "This is dumb..."}, {201, true, false, "This is dumb..."},
      {250, true, false, "This is dumb..."},  {251, true, true, "This is dumb..."},
      {270, true, true, "This is dumb..."},   {271, true, true, "You better stop"},
      {301, true, true, "Alright... Bye..."}, {330, true, true, "Alright... Bye..."},
  };
  ServentRig rig;
  bool ended = false;
  rig.servent->on_ended = [&] { ended = true; };
  int moves = 0;
  const auto catch_it = [&] {
    rig.form().mascot1.move_over();
    EXPECT_FALSE(rig.form().mascot1.visible());
    rig.form().mascot2.move_over();
    ++moves;
  };
  for (const Case& c : table) {
    while (moves < c.moves) catch_it();
    EXPECT_EQ(rig.form().mascot3.visible(), c.third) << c.moves;
    EXPECT_EQ(rig.form().mascot_text.visible(), c.text_shown) << c.moves;
    EXPECT_EQ(rig.form().mascot_text.text(), c.text) << c.moves;
  }
  rig.world.run_for(1);
  EXPECT_FALSE(ended);
  catch_it();
  rig.world.run_for(1);
  EXPECT_TRUE(ended);
}

TEST(DebugLog, IsCutToItsFirstCharacters) {
  ServentRig rig;
  Window& window = rig.form().frmDebug;
  auto peer = rig.connected_peer("10.0.0.2");
  window.set_text(std::string(4980, 'a'));
  peer->send("GET \x1b[2J\r\n");
  rig.world.run_for(5);
  ASSERT_GT(4980 + rig.log.back().size() + 2, 5000U);
  EXPECT_EQ(window.text(), std::string(4000, 'a'));
  window.set_text("");
  peer->send("GET \x1b[2J\xC2\x9B\xC3\x9B\r\n");
  rig.world.run_for(5);
  EXPECT_EQ(window.text(),
            "Request a file of mine on msg port: GET \\x1B[2J\\xC2\\x9B\xC3\x9B\\x0D\\x0A\r\n");
}

TEST(UnknownDescriptors, KeepTheNewestText) {
  ServentRig rig;
  auto peer = rig.connected_peer("10.0.0.2");
  const int sent = 5000;
  for (int i = 0; i < sent; ++i) peer->send(descriptor("u", 3 + i % 2, 1, 0, ""));
  rig.world.run_for(100);
  EXPECT_EQ(rig.counter(rig.form().unknown_stat), std::to_string(sent));
  EXPECT_EQ(rig.form().frmUnknown.text().size(), 65535U);
  EXPECT_TRUE(rig.form().frmUnknown.text().starts_with("Type: 4 Len: 0\r\nType: 3 Len: 0\r\n"));
}

// Hosts that could not be read once are not lost with the next save.
TEST(Servent, KeepsACacheFileThatItCouldNotRead) {
  const std::string kFile = "Velmora_cache.dat";
  const std::string torn = "\"Rows in this file:\",2\r\n\"Format\"\r\n1,\"24.0.0.9\",63";
  SimWorld world;
  SimHost& host = world.add_host("10.0.0.1");
  const auto live_once = [&](bool disk_fails) {
    Servent servent(host.platform(), {});
    servent.start();
    host.files().fail_next(disk_fails ? 100 : 0, EIO);
    servent.save();  // as when a desktop session ends
    servent.shutdown();
    host.files().fail_next(0, 0);
  };
  host.files().put(kFile, torn);
  live_once(true);
  EXPECT_EQ(host.files().content(kFile), torn);
  live_once(false);
  EXPECT_EQ(host.files().content(kFile + ".bad"), torn);
  EXPECT_NE(host.files().content(kFile), torn);
}

}  // namespace
}  // namespace velmora::sim
