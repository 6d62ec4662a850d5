// The small windows and the icon of the notification area, worked through the form.
#include <gmock/gmock.h>

#include "servent_rig.h"

namespace velmora::sim {
namespace {

using testing::ElementsAre;

TEST(ColourChooser, SetsTheColourOfTheButtonThatOpenedIt) {
  struct Case {
    Button Form::*button;
    int red, green, blue;
    std::int32_t colour;
    const char* preview;
  };
  const Case table[] = {
      {&Form::form_b_sel, 255, 0, 0, 0xFF, "#FF0000"},
      {&Form::form_f_sel, 0, 255, 0, 0xFF00, "#00FF00"},
      {&Form::but_b_sel, 0, 0, 255, 0xFF0000, "#0000FF"},
      {&Form::list_b_sel, 1, 2, 3, 0x030201, "#010203"},
      {&Form::list_f_sel, 255, 255, 255, 0xFFFFFF, "#FFFFFF"},
      {&Form::form_b_sel, 0, 0, 0, kButtonFace, "#000000"},  // black is never a choice
  };
  ServentRig rig;
  Form& form = rig.form();
  for (const Case& c : table) {
    (form.*c.button).click();
    EXPECT_TRUE(form.frmColor.shown());
    form.Red.set_position(c.red);
    form.Green.set_position(c.green);
    form.Blue.set_position(c.blue);
    EXPECT_EQ(form.preview.text(), c.preview);
    EXPECT_EQ(form.Green_label.text(), std::to_string(c.green));
    form.ok.click();
    EXPECT_EQ((form.*c.button).back_colour(), c.colour) << c.preview;
    EXPECT_FALSE(form.frmColor.shown());
  }
  form.list_b_sel.click();
  EXPECT_EQ(form.preview.text(), "#010203") << "begins with the colour that was chosen";
}

TEST(ColourChooser, BlackFromTheSettingsIsNoColourEither) {
  SimWorld world;
  SimHost& host = world.add_host("10.0.0.1");
  host.files().put("settings.toml",
                   "[config]\nform_b_color = \"0\"\nform_f_color = \"255\"\n"
                   "list_f_color = \"-2147483643\"\n");
  Servent servent(host.platform(), {});
  servent.start();
  EXPECT_EQ(servent.form().form_b_sel.back_colour(), kButtonFace);
  EXPECT_EQ(servent.form().form_f_sel.back_colour(), 255);
  servent.form().form_f_sel.click();
  servent.form().list_f_sel.click();
  EXPECT_EQ(servent.form().preview.text(), "#FF0000") << "a system colour has no parts";
}

TEST(DirectoryChooser, PutsThePathWhereItsButtonWantsIt) {
  ServentRig rig(ServentRig::Fields{{"down_config", "/old"}});
  Form& form = rig.form();
  const auto choose = [&](Button& browse, const char* path, Button& end) {
    browse.click();
    EXPECT_TRUE(form.frmDir.shown());
    form.frmDir_path.set_text(path);
    end.click();
  };
  form.download_browse_config.click();
  EXPECT_EQ(form.frmDir_mode.text(), "download");
  EXPECT_EQ(form.frmDir_path.text(), "/old");
  choose(form.download_browse_config, "/down", form.frmDir_ok);
  EXPECT_EQ(form.down_config.text(), "/down");
  choose(form.upload_browse_config, "/music", form.frmDir_ok);
  EXPECT_EQ(form.frmDir_mode.text(), "share");
  EXPECT_THAT(form.frmDir_caption.text(),
              testing::HasSubstr("All files will be shared.\nOnly the Selected"));
  choose(form.upload_browse_config, "/music", form.frmDir_ok);
  choose(form.upload_browse_config, "/other", form.frmDir_cancel);
  EXPECT_FALSE(form.frmDir.shown());
  choose(form.upload_browse_config, "", form.frmDir_ok);
  EXPECT_TRUE(form.frmDir.shown()) << "nothing is chosen yet";
  EXPECT_THAT(form.upload_config.items(), ElementsAre("/music", "/music"));
  EXPECT_EQ(form.down_config.text(), "/down");
}

TEST(TrayIcon, ShowsTheWindowOrItsMenu) {
  struct Case {
    int message;
    bool window;
    int menus;
  };
  ServentRig rig;
  Form& form = rig.form();
  int menus = 0;
  form.mnuFile.on_click = [&] { ++menus; };
  for (const Case& c : {Case{512, false, 0}, Case{513, true, 0}, Case{514, false, 0},
                        Case{515, false, 0}, Case{516, false, 1}, Case{517, false, 0}}) {
    form.frmMain.hide();
    menus = 0;
    form.chkMsg.mouse_move(c.message);
    EXPECT_EQ(form.frmMain.shown(), c.window) << c.message;
    EXPECT_EQ(menus, c.menus) << c.message;
  }
}

TEST(TrafficHistory, TakesASampleASecond) {
  ServentRig rig;
  auto peer = rig.connected_peer("10.0.0.2");
  rig.world.run_for(5000);
  const TrafficHistory& history = rig.servent->traffic_history();
  const std::uint64_t before = history.taken();
  peer->send(descriptor("p", 0, 1, 0, ""));
  rig.world.run_for(10'000);
  EXPECT_EQ(history.taken(), before + 10);
  double pings = 0;
  double bytes = 0;
  for (std::size_t i = history.size() - 10; i < history.size(); ++i) {
    pings += history.sample(i).pings;
    bytes += history.sample(i).bytes_in;
    EXPECT_EQ(history.sample(i).connections_in, 1);
  }
  EXPECT_EQ(pings, 1);
  EXPECT_EQ(bytes, 23);
}

}  // namespace
}  // namespace velmora::sim
