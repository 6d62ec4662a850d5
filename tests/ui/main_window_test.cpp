// The main window as a whole: every control has its widget, and what the window does by itself.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QSet>
#include <QToolButton>
#include <iostream>
#include <map>

#include "cache_rows.h"
#include "ui/first_steps.h"
#include "ui/widgets/combo_list_box.h"
#include "ui/widgets/form_button.h"
#include "ui/widgets/line_edit.h"
#include "ui/widgets/list_table.h"
#include "ui/widgets/option_buttons.h"
#include "ui/widgets/panel_bar.h"
#include "ui/widgets/picture_box.h"
#include "ui/widgets/progress_line.h"
#include "ui/widgets/slider_field.h"
#include "ui/widgets/value_label.h"
#include "window_rig.h"

namespace velmora::ui {
namespace {

// Which class of widget a control of its kind has to be shown by.
class WidgetClass : public ControlVisitor {
 public:
  bool fits(Control& control, QObject* object) {
    object_ = object;
    fits_ = false;
    control.accept(*this);
    return fits_;
  }

  void visit(TextField& field) override { field.multi_line() ? is<TextEdit>() : is<LineEdit>(); }
  void visit(CheckBox& /*box*/) override { is<QCheckBox>(); }
  void visit(OptionGroup& group) override {
    group.page() == Page::window ? is<PageButtons>() : is<OptionButtons>();
  }
  void visit(Slider& /*slider*/) override { is<SliderField>(); }
  void visit(Label& /*label*/) override { is<QLabel>(); }
  void visit(ComboList& /*list*/) override { is<ComboListBox>(); }
  void visit(Button& /*button*/) override { is<FormButton>(); }
  void visit(Picture& /*picture*/) override { is<PictureBox>(); }
  void visit(MenuItem& /*item*/) override { is<QAction>(); }
  void visit(Window& window) override {
    window.name() == "frmMain" ? is<MainWindow>() : is<QDialog>();
  }
  void visit(StatusBar& /*bar*/) override { is<PanelBar>(); }
  void visit(Progress& /*progress*/) override { is<ProgressLine>(); }
  void visit(ListView& /*list*/) override { is<ListTable>(); }

 private:
  template <class Widget>
  void is() {
    fits_ = qobject_cast<Widget*>(object_) != nullptr;
  }

  QObject* object_ = nullptr;
  bool fits_ = false;
};

std::multimap<std::string, QObject*> named_objects(WindowRig& rig) {
  QObjectList objects{&rig.window()};
  objects += rig.window().findChildren<QObject*>();
  objects += rig.tray().menu().findChildren<QObject*>();
  std::multimap<std::string, QObject*> named;
  for (QObject* object : objects) {
    const std::string name = object->objectName().toStdString();
    const bool shows = object->isWidgetType() || qobject_cast<QAction*>(object) != nullptr;
    if (shows && !name.empty() && !name.starts_with("qt_")) named.emplace(name, object);
  }
  return named;
}

bool is_in_place(WindowRig& rig, const Control& control, QObject* object) {
  auto* widget = qobject_cast<QWidget*>(object);
  if (widget == nullptr || widget == &rig.window()) return true;
  switch (control.page()) {
    case Page::window:
      return widget->isWindow() || rig.window().isAncestorOf(widget);
    case Page::form:
      return widget->window() != &rig.window();
    default:
      return rig.window().page(control.page())->isAncestorOf(widget);
  }
}

TEST(MainWindow, HasOneWidgetForEveryControlAndNoOther) {
  WindowRig rig;
  for (Window* small :
       {&rig.form().frmColor, &rig.form().frmDir, &rig.form().frmDebug, &rig.form().frmUnknown}) {
    small->show();
  }
  rig.settle();
  const auto named = named_objects(rig);
  WidgetClass kind;
  std::size_t controls = 0;
  rig.form().for_each([&](Control& control) {
    ++controls;
    ASSERT_EQ(named.count(control.name()), 1U) << control.name();
    QObject* object = named.find(control.name())->second;
    EXPECT_TRUE(kind.fits(control, object))
        << control.name() << " is a " << object->metaObject()->className();
    EXPECT_TRUE(is_in_place(rig, control, object)) << control.name();
  });
  for (const auto& [name, object] : named) {
    EXPECT_NE(rig.form().find(name), nullptr)
        << name << ", a " << object->metaObject()->className() << ", stands for no control";
  }
  EXPECT_GT(controls, 100U);
}

// Whatever takes what a person types or presses is on the way of the Tab key, under a name that
// nothing else on its page has.
TEST(MainWindow, EveryControlOfAPageIsReachedByKeyboard) {
  WindowRig rig;
  QSet<const QWidget*> on_the_way;
  for (QWidget* at = rig.window().nextInFocusChain(); at != &rig.window();
       at = at->nextInFocusChain()) {
    if ((at->focusPolicy() & Qt::TabFocus) != 0) {
      for (QWidget* up = at; up != nullptr; up = up->parentWidget()) on_the_way.insert(up);
    }
  }
  QSet<QString> names;
  rig.form().for_each([&](Control& control) {
    if (control.page() == Page::form || control.page() == Page::window) return;
    QWidget& widget = rig.widget(control);
    const auto* label = dynamic_cast<const Label*>(&control);
    const bool shows_only = label != nullptr
                                ? !label->on_click
                                : dynamic_cast<const Picture*>(&control) != nullptr ||
                                      dynamic_cast<const Progress*>(&control) != nullptr;
    EXPECT_TRUE(shows_only || on_the_way.contains(&widget)) << control.name();
    const QString name =
        QString::number(static_cast<int>(control.page())) + widget.accessibleName();
    EXPECT_TRUE(shows_only || !names.contains(name)) << control.name();
    names.insert(name);
  });
}

TEST(MainWindow, ChoosesPagesByKeyByButtonAndByTheForm) {
  WindowRig rig;
  rig.go_to(Page::search);
  EXPECT_EQ(rig.form().pgbut.chosen(), 4);
  EXPECT_TRUE(rig.window().page(Page::search)->isVisible());
  EXPECT_EQ(QApplication::focusWidget(), &rig.widget(rig.form().Tsearch));

  QTest::mouseClick(rig.widget<PageButtons>(rig.form().pgbut).button(6), Qt::LeftButton);
  rig.settle();
  EXPECT_TRUE(rig.window().page(Page::hosts)->isVisible());

  rig.form().pgbut.choose(0);
  rig.settle();
  EXPECT_TRUE(rig.window().page(Page::stats)->isVisible());
}

TEST(MainWindow, ClosingHidesOrMinimisesAndNeverEndsTheProgram) {
  WindowRig rig;
  rig.window().resize(900, 600);
  EXPECT_FALSE(rig.window().close());
  rig.settle();
  EXPECT_FALSE(rig.window().isVisible());
  EXPECT_FALSE(rig.form().frmMain.shown());

  rig.form().mnushow.click();
  rig.settle();
  EXPECT_TRUE(rig.window().isVisible());

  rig.set_tray_present(false);
  rig.window().close();
  rig.settle();
  EXPECT_TRUE(rig.form().frmMain.shown());
  EXPECT_TRUE(rig.window().isMinimized());
  rig.form().frmMain.show();  // shown as it is, it is wanted in front
  rig.settle();
  EXPECT_FALSE(rig.window().isMinimized());
  EXPECT_FALSE(rig.ended());

  rig.reopen();
  EXPECT_EQ(rig.window().size(), QSize(900, 600));
}

// Only the configuration may have to be scrolled there, and nothing sideways.
TEST(MainWindow, TheSmallestWindowHoldsEveryPage) {
  WindowRig rig;
  rig.window().resize(rig.window().minimumSize());
  EXPECT_TRUE(rig.window().first_steps().isVisible());
  QTest::mouseClick(rig.window().first_steps().findChild<QToolButton*>(), Qt::LeftButton);
  for (int page = 0; page < 7; ++page) {
    rig.form().pgbut.choose(page);
    rig.settle();
    QWidget& content = *rig.window().page(static_cast<Page>(page));
    const QSize room = content.parentWidget()->size();
    EXPECT_LE(content.width(), room.width()) << page;
    if (static_cast<Page>(page) != Page::configuration) {
      EXPECT_LE(content.height(), room.height()) << page;
    }
  }
  EXPECT_EQ(rig.window().size(), QSize(760, 560));
}

TEST(FirstSteps, LeadFromAnEmptyProfileToSharedFilesAndAHost) {
  WindowRig rig({.files = [](sim::SimHost& host) { host.files().put("/music/a.mp3", "x"); }});
  FirstSteps& steps = rig.window().first_steps();
  EXPECT_TRUE(steps.isVisible());
  const QPoint host_place = steps.host_field()->mapTo(&rig.window(), QPoint());

  QTest::mouseClick(steps.download_button(), Qt::LeftButton);
  rig.settle();
  EXPECT_TRUE(rig.form().frmDir.shown());
  rig.form().frmDir.hide();
  rig.form().down_config.set_text("/downloads");

  QTest::mouseClick(steps.share_button(), Qt::LeftButton);
  rig.settle();
  rig.form().frmDir_path.set_text("/music");
  rig.form().frmDir_cancel.click();
  rig.settle();
  EXPECT_FALSE(steps.shared());
  QTest::mouseClick(steps.share_button(), Qt::LeftButton);
  rig.settle();
  rig.form().frmDir_path.set_text("/music");
  rig.form().frmDir_ok.click();
  rig.settle();
  EXPECT_EQ(rig.form().sharenum_config.text(), "1");  // scanned in one go
  EXPECT_TRUE(steps.shared());
  EXPECT_EQ(steps.host_field()->mapTo(&rig.window(), QPoint()), host_place);

  QTest::keyClicks(steps.host_field(), "10.0.0.9");
  QTest::keyClick(steps.host_field(), Qt::Key_Return);
  for (int second = 0; second < 20; ++second) rig.settle(1000);
  EXPECT_EQ(steps.outcome()->text(), "No response");

  rig.world().listen_raw("10.0.0.2", 6346, [](sim::RawPeer& peer) { peer.send(sim::kWelcome); });
  steps.host_field()->clear();
  QTest::keyClicks(steps.host_field(), "10.0.0.2");
  QTest::keyClick(steps.host_field(), Qt::Key_Return);
  rig.settle(3000);
  EXPECT_FALSE(steps.isVisible());
  rig.settle(60'000);  // the silent neighbour has been dropped
  EXPECT_EQ(rig.form().StatusBar.panel(2), "Connections: 0 in, 0 out");
  EXPECT_FALSE(steps.isVisible());
}

TEST(FirstSteps, ScanAFolderThatWasSharedElsewhere) {
  WindowRig rig({.files = [](sim::SimHost& host) { host.files().put("/music/a.mp3", "x"); }});
  FirstSteps& steps = rig.window().first_steps();
  rig.form().upload_config.enter("/music");
  rig.settle();
  EXPECT_FALSE(steps.shared());
  EXPECT_EQ(steps.share_button()->text(), "Scan");
  QTest::mouseClick(steps.share_button(), Qt::LeftButton);
  rig.settle();
  EXPECT_EQ(rig.form().sharenum_config.text(), "1");
  EXPECT_TRUE(steps.shared());
}

TEST(SearchPage, TheEmptyListSaysWhatToDo) {
  WindowRig rig;
  const auto hint = [&] {
    return rig.widget(rig.form().lfound).accessibleDescription().section(u'.', 0, 0);
  };
  EXPECT_EQ(hint(), "Not connected to any host");
  rig.world().listen_raw("10.0.0.2", 6346, [](sim::RawPeer& peer) { peer.send(sim::kWelcome); });
  rig.form().new_host.enter("10.0.0.2");
  rig.settle(2000);
  EXPECT_EQ(hint(), "Type words above and press Enter: the connected hosts are searched");
  rig.go_to(Page::search);
  rig.type(rig.form().Tsearch, "song");
  rig.settle();
  EXPECT_EQ(hint(), "No results so far");
  rig.settle(60'000);  // the silent neighbour has been dropped
  EXPECT_EQ(hint(), "Not connected to any host");
}

TEST(FirstSteps, ClosedForGoodStayAway) {
  WindowRig rig;
  auto* close = rig.window().first_steps().findChild<QToolButton*>();
  QTest::mouseClick(close, Qt::LeftButton);
  rig.reopen();
  EXPECT_FALSE(rig.window().first_steps().isVisible());
}

// One dot, and what a file may promise or hold instead.
const QByteArray kDot =
    QByteArray::fromHex("47494638396101000100800100ff0000ffffff2c00000000010001000002024401003b");

TEST(PageImages, TakeEachReadableFileByItself) {
  const auto write = [](const QString& path, const QByteArray& data) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(data);
  };
  QByteArray enormous = kDot;
  enormous.replace(6, 4, QByteArray::fromHex("ffffffff"));
  WindowRig rig({.profile = [&](const QString& folder) {
    write(folder + "/button1.gif", kDot);
    write(folder + "/button2.gif", "no image");
    write(folder + "/button3.gif", enormous);
    write(folder + "/button4.gif", kDot + QByteArray(2'000'000, ' '));
    write(folder + "/button5.gif", "<svg xmlns='http://www.w3.org/2000/svg'/>");
    write(folder + "/button7.gif", kDot);
  }});
  const auto& buttons = rig.widget<PageButtons>(rig.form().pgbut);
  QString taken;
  for (int number = 0; number < 7; ++number) {
    const QImage image = buttons.button(number)->icon().pixmap(1, 1).toImage();
    EXPECT_FALSE(buttons.button(number)->icon().isNull());
    if (image.pixelColor(0, 0) == QColor(Qt::red)) taken += QString::number(number + 1);
  }
  EXPECT_EQ(taken, "17");
}

TEST(MainWindow, IsPaintedSoonWithAFullCache) {
  std::vector<sim::CacheRow> hosts;
  for (int row = 0; row < 10000; ++row) {
    hosts.push_back({"62.1." + std::to_string(row / 200) + "." + std::to_string(row % 200)});
  }
  const std::string cache = sim::cache_file(hosts);
  QElapsedTimer clock;
  WindowRig rig({.files =
                     [&](sim::SimHost& host) {
                       host.files().put(sim::kCacheFileName, cache);
                       clock.start();
                     },
                 .shown = false});
  ASSERT_EQ(rig.form().lcache.rows(), 100U);
  rig.window().show();
  QCoreApplication::processEvents();
  const auto ms = clock.elapsed();
  std::cout << "start to first paint: " << ms << " ms\n";
  EXPECT_LT(ms, 1000);  // some 60 ms on a quiet machine; a busy one has to pass too
}

}  // namespace
}  // namespace velmora::ui
