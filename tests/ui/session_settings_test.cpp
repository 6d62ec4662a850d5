// Small windows and messages, by mouse and keyboard alone.
#include <gmock/gmock.h>

#include <QLabel>
#include <QSlider>

#include "window_rig.h"

namespace velmora::ui {
namespace {

using testing::HasSubstr;

class SettingsSession : public testing::Test {
 protected:
  Form& form() { return rig_.form(); }
  QString text(const Label& label) { return rig_.widget<QLabel>(label).text(); }
  // Also the small windows, which are no controls' widgets but carry the controls' names.
  bool on_screen(const Control& control) {
    auto* found = rig_.window().findChild<QWidget*>(QString::fromStdString(control.name()));
    return found != nullptr && found->isVisible();
  }

  WindowRig rig_;
};

TEST_F(SettingsSession, ChoosesAColourAndADirectory) {
  rig_.go_to(Page::configuration);
  rig_.click(form().list_b_sel);
  EXPECT_TRUE(on_screen(form().frmColor));
  QTest::keyClick(rig_.widget(form().Red).findChild<QSlider*>(), Qt::Key_End);
  rig_.settle();
  EXPECT_EQ(text(form().preview), "#FF0000");
  rig_.click(form().ok);
  EXPECT_FALSE(on_screen(form().frmColor));
  EXPECT_EQ(rig_.widget(form().down_config).palette().base().color(), QColor(255, 0, 0));

  rig_.click(form().download_browse_config);
  EXPECT_TRUE(on_screen(form().frmDir));
  EXPECT_FALSE(on_screen(form().frmDir_mode));
  EXPECT_THAT(text(form().frmDir_caption).toStdString(),
              HasSubstr("to download the files.\nFiles in progress"));
  rig_.type(form().frmDir_path, "/tmp", false);
  rig_.click(form().frmDir_ok);
  EXPECT_FALSE(on_screen(form().frmDir));
  EXPECT_EQ(rig_.widget<QLineEdit>(form().down_config).text(), "/tmp");
}

TEST_F(SettingsSession, ReadsTheHelp) {
  struct Case {
    Page page;
    const Button& button;
    const char* text;
  };
  for (const Case& c : {
           Case{Page::hosts, form().help_hosts,
                "DoubleClick in the 'Currently connected' list will Disconnect the host. "
                "DoubleClick in the 'Available hosts' list will attempt a connection."},
           Case{Page::configuration, form().speed_help,
                "Setting this to a high value, will Not increase your downloading performance. It "
                "will encourage people to try and download many files from you, which will hog all "
                "your bandwidth."},
           Case{Page::configuration, form().ver_help,
                "This application is in Alpha stages. Many features are not functional yet. See "
                "the README for the newest version."},
           Case{Page::configuration, form().color_help,
                " button1.gif ~ button7.gif in the same dir as this app."},
       }) {
    rig_.go_to(c.page);
    rig_.click(c.button);
    ASSERT_TRUE(rig_.box() != nullptr) << c.text;
    EXPECT_EQ(rig_.box()->windowTitle(), "?");
    EXPECT_THAT(rig_.answer(QMessageBox::Ok).toStdString(), HasSubstr(c.text));
    EXPECT_EQ(rig_.box(), nullptr);
  }
}

TEST_F(SettingsSession, OpensTheTextWindows) {
  auto peer = rig_.servent_rig().connected_peer("10.0.0.2");
  peer->send(descriptor("u", 7, 1, 0, ""));
  rig_.settle();
  rig_.go_to(Page::stats);
  rig_.click(form().unknown_stat);
  EXPECT_TRUE(on_screen(form().frmUnknown));
  rig_.click(form().frmUnknown_hide);
  EXPECT_FALSE(on_screen(form().frmUnknown));

  rig_.go_to(Page::configuration);
  rig_.click(form().s_debug);
  EXPECT_FALSE(on_screen(form().frmDebug)) << "a double click is wanted";
  QTest::mouseDClick(&rig_.widget(form().s_debug), Qt::LeftButton);
  rig_.settle();
  EXPECT_TRUE(on_screen(form().frmDebug));
  rig_.click(form().test);
  rig_.window().findChild<QWidget*>("frmDebug")->close();
  rig_.settle();
  EXPECT_FALSE(form().frmDebug.shown());
}

}  // namespace
}  // namespace velmora::ui
