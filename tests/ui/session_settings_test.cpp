// Settings, small windows, messages and the tray icon, by mouse and keyboard alone.
#include <gmock/gmock.h>

#include <QLabel>
#include <QListView>
#include <QMouseEvent>
#include <QSlider>

#include "window_rig.h"

namespace velmora::ui {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class SettingsSession : public testing::Test {
 protected:
  Form& form() { return rig_.form(); }
  QString text(const Label& label) { return rig_.widget<QLabel>(label).text(); }
  void press_key(const Slider& slider, Qt::Key key) {
    QTest::keyClick(rig_.widget(slider).findChild<QSlider*>(), key);
    rig_.settle();
  }
  // Also the small windows, which are no controls' widgets but carry the controls' names.
  bool on_screen(const Control& control) {
    auto* found = rig_.window().findChild<QWidget*>(QString::fromStdString(control.name()));
    return found != nullptr && found->isVisible();
  }

  WindowRig rig_;
};

TEST_F(SettingsSession, EditsTheAddressFilter) {
  rig_.go_to(Page::configuration);
  EXPECT_EQ(text(form().totalfilter_config), "18");
  rig_.type(form().cachefilter_config, "66.6.");
  EXPECT_EQ(text(form().totalfilter_config), "19");
  EXPECT_EQ(form().cachefilter_config.items().back(), "66.6.");

  auto& rows = *rig_.widget(form().cachefilter_config).findChild<QListView*>();
  rows.setCurrentIndex(rows.model()->index(0, 0));
  QTest::keyClick(&rows, Qt::Key_Delete);
  rig_.settle();
  EXPECT_EQ(rows.model()->rowCount(), 18);
  EXPECT_EQ(form().cachefilter_config.items().front(), "172.16.");
  EXPECT_EQ(text(form().totalfilter_config), "18");
}

TEST_F(SettingsSession, ChoosesColoursButNeverBlack) {
  rig_.go_to(Page::configuration);
  const auto back = [&] { return rig_.widget(form().down_config).palette().base().color(); };
  const QColor untouched = back();
  struct Case {
    Qt::Key red, green, blue;
    QString preview;
    std::int32_t chosen;
    QColor painted;
  };
  for (const Case& c :
       {Case{Qt::Key_End, Qt::Key_End, Qt::Key_Home, "#FFFF00", 0x00FFFF, QColor(255, 255, 0)},
        Case{Qt::Key_Home, Qt::Key_Home, Qt::Key_Home, "#000000", kButtonFace, untouched}}) {
    rig_.click(form().list_b_sel);
    EXPECT_TRUE(on_screen(form().frmColor));
    press_key(form().Red, c.red);
    press_key(form().Green, c.green);
    press_key(form().Blue, c.blue);
    EXPECT_EQ(text(form().preview), c.preview);
    rig_.click(form().ok);
    EXPECT_FALSE(on_screen(form().frmColor));
    EXPECT_EQ(form().list_b_sel.back_colour(), c.chosen);
    EXPECT_EQ(back(), c.painted);
  }
}

TEST_F(SettingsSession, ChoosesDirectoriesForBothPurposes) {
  rig_.go_to(Page::configuration);
  const auto choose = [&](const Button& browse, const char* path, const Button& end) {
    rig_.click(browse);
    EXPECT_TRUE(on_screen(form().frmDir));
    EXPECT_FALSE(on_screen(form().frmDir_mode));
    std::string caption = text(form().frmDir_caption).toStdString();
    rig_.type(form().frmDir_path, path, false);
    rig_.click(end);
    EXPECT_FALSE(on_screen(form().frmDir));
    return caption;
  };
  EXPECT_THAT(choose(form().download_browse_config, "/tmp", form().frmDir_ok),
              HasSubstr("to download the files.\nFiles in progress"));
  choose(form().download_browse_config, "/usr", form().frmDir_cancel);
  EXPECT_EQ(rig_.widget<QLineEdit>(form().down_config).text(), "/tmp");
  for (int i = 0; i < 2; ++i) {
    EXPECT_THAT(choose(form().upload_browse_config, "/usr", form().frmDir_ok),
                HasSubstr("All files will be shared.\nOnly the Selected"));
  }
  EXPECT_THAT(form().upload_config.items(), ElementsAre("/usr", "/usr"));
  EXPECT_EQ(form().down_config.text(), "/tmp");
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

TEST_F(SettingsSession, AsksBeforeItClearsTheCache) {
  auto peer = rig_.servent_rig().connected_peer("10.0.0.2");
  // A pong of 20.0.0.1:6346 with 5 files.
  const std::string pong("\xCA\x18\x14\0\0\1\5\0\0\0\0\0\0\0", 14);
  peer->send(sim::descriptor("pong", 1, 1, 0, pong));
  rig_.settle(2000);
  rig_.go_to(Page::hosts);
  ASSERT_EQ(rig_.shown_rows(form().lcache), 1);
  for (const auto& [button, rows] : {std::pair(QMessageBox::No, 1), {QMessageBox::Yes, 0}}) {
    rig_.click(form().clear_cache);
    ASSERT_TRUE(rig_.box() != nullptr);
    EXPECT_EQ(rig_.box()->windowTitle(), "Clear Cache");
    rig_.answer(button);
    EXPECT_EQ(rig_.shown_rows(form().lcache), rows);
  }
}

TEST_F(SettingsSession, OpensTheTextWindows) {
  auto peer = rig_.servent_rig().connected_peer("10.0.0.2");
  peer->send(sim::descriptor("u", 7, 1, 0, ""));
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

TEST_F(SettingsSession, TheTrayIconShowsTheWindowOrItsMenu) {
  rig_.window().close();
  rig_.settle();
  ASSERT_FALSE(rig_.window().isVisible());
  struct Case {
    int message;
    bool window, menu;
  };
  for (const Case& c : {Case{512, false, false},
                        {514, false, false},
                        {516, false, true},
                        {515, false, false},
                        {513, true, false}}) {
    form().chkMsg.mouse_move(c.message);
    rig_.settle();
    EXPECT_EQ(rig_.window().isVisible(), c.window) << c.message;
    EXPECT_EQ(rig_.tray().menu().isVisible(), c.menu) << c.message;
    rig_.tray().menu().close();
  }
  const auto items = rig_.tray().menu().actions();
  ASSERT_EQ(items.size(), 2);
  EXPECT_EQ(rig_.tray().menu().defaultAction(), items[0]);
  items[1]->trigger();
  rig_.settle();
  EXPECT_TRUE(rig_.ended());
}

TEST_F(SettingsSession, ThePictureGameEndsTheProgram) {
  rig_.go_to(Page::configuration);
  const auto move_over = [&](const Picture& picture) {
    QWidget& widget = rig_.widget(picture);
    ASSERT_TRUE(widget.isVisible());
    const QPointF at(5, 5);
    QMouseEvent move(QEvent::MouseMove, at, widget.mapToGlobal(at), Qt::NoButton, Qt::NoButton, {});
    QApplication::sendEvent(&widget, &move);
    rig_.settle(10);
  };
  for (int move = 1; move <= 331; ++move) {
    ASSERT_FALSE(rig_.ended()) << move;
    move_over(form().mascot1);
    move_over(form().mascot2);
    if (move == 250) {
      EXPECT_FALSE(on_screen(form().mascot_text));
    }
    if (move == 271) {
      EXPECT_EQ(text(form().mascot_text), "You better stop");
    }
  }
  EXPECT_EQ(text(form().mascot_text), "Alright... Bye...");
  EXPECT_TRUE(on_screen(form().mascot3));
  EXPECT_TRUE(rig_.ended());
}

}  // namespace
}  // namespace velmora::ui
