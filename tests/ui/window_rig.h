// The real main window over a servent on the simulated platform: what the window's tests start
// from. Message boxes and the notification area's menu are the real ones; time is virtual. A test
// does what a person does, on the widget of a control, and reads the form or the widgets.
//
//   WindowRig rig;
//   rig.go_to(Page::hosts);
//   rig.type(rig.form().new_host, "10.0.0.2:6346");  // and Enter
//   rig.settle();
#pragma once

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>
#include <functional>
#include <memory>
#include <string>

#include "servent_rig.h"
#include "ui/main_window.h"
#include "ui/qt_message_boxes.h"
#include "ui/qt_tray.h"
#include "ui/svg_image.h"
#include "ui/widgets/form_binding.h"
#include "ui/widgets/text.h"

namespace velmora::ui {

class WindowRig {
 public:
  struct Start {
    sim::ServentRig::Fields fields = {};
    // Put on the disk before the servent starts, and into the window's profile folder.
    std::function<void(sim::SimHost&)> files = {};
    std::function<void(const QString& folder)> profile = {};
    bool tray = true;
    bool shown = true;
  };

  WindowRig() : WindowRig(Start()) {}
  explicit WindowRig(const Start& start)
      : tray_(program_icon()), servent_rig_(start.fields, 1, [&](sim::SimHost& host) {
          if (start.files) start.files(host);
          const Platform sim = host.platform();
          return Platform{sim.loop,     sim.network, sim.files, boxes_,    sim.tray,
                          sim.programs, sim.control, sim.dns,   sim.random};
        }) {
    tray_.attach(form());
    if (start.profile) start.profile(folder_.path());
    servent().on_ended = [this] { ended_ = true; };
    tray_present_ = start.tray;
    open_window();
    if (start.shown) window_->show();
    settle();
  }
  ~WindowRig() { window_.reset(); }

  [[nodiscard]] Form& form() { return servent_rig_.form(); }
  [[nodiscard]] Servent& servent() { return *servent_rig_.servent; }
  [[nodiscard]] sim::ServentRig& servent_rig() { return servent_rig_; }
  [[nodiscard]] sim::SimWorld& world() { return servent_rig_.world; }
  [[nodiscard]] MainWindow& window() { return *window_; }
  [[nodiscard]] QtTray& tray() { return tray_; }
  [[nodiscard]] bool ended() const { return ended_; }  // the servent has shut down
  void set_tray_present(bool present) { tray_present_ = present; }

  // Closes the window as the end of the program does and opens it anew.
  void reopen() {
    window_.reset();
    open_window();
    window_->show();
    settle();
  }

  // Lets virtual time pass, and shows everything that came of it. By default long enough for the
  // half-second refresh.
  void settle(std::int64_t ms = 600) {
    turn();
    world().run_for(ms);
    turn();
  }

  // The one widget of a control.
  template <class Widget = QWidget>
  [[nodiscard]] Widget& widget(const Control& control) {
    auto* found = dynamic_cast<Widget*>(window_->binding().widget(control));
    if (found == nullptr) throw std::logic_error("no such widget for " + control.name());
    return *found;
  }

  // What a person works on has to be on the screen.
  [[nodiscard]] QWidget& on_screen(const Control& control) {
    QWidget& target = widget(control);
    EXPECT_TRUE(target.isVisible()) << control.name();
    return target;
  }

  // By keyboard, as Alt and the page's number.
  void go_to(Page page) {
    window_->activateWindow();  // a small window or a message may have been in front
    turn();
    QTest::keyClick(window_.get(), static_cast<Qt::Key>(Qt::Key_1 + static_cast<int>(page)),
                    Qt::AltModifier);
    turn();
  }
  void click(const Control& control) {
    QTest::mouseClick(&on_screen(control), Qt::LeftButton);
    turn();
  }
  // Tick boxes are hit on their mark.
  void tick(const CheckBox& box) {
    QWidget& target = on_screen(box);
    QTest::mouseClick(&target, Qt::LeftButton, {}, QPoint(8, target.height() / 2));
    turn();
  }
  // The text takes the place of what the field (or the edit field of a list) held; then Enter.
  void type(const Control& control, const QString& text, bool enter = true) {
    QWidget& target = on_screen(control);
    auto* field = qobject_cast<QLineEdit*>(&target);
    if (field == nullptr) field = target.findChild<QLineEdit*>();
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClicks(field, text);
    if (enter) QTest::keyClick(field, Qt::Key_Return);
    turn();
  }
  // Rows count from 1, as they are shown.
  void double_click_row(const ListView& list, int row, int column = 1) {
    const QPoint at = row_position(list, row, column);
    QTest::mouseClick(table(list).viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(table(list).viewport(), Qt::LeftButton, {}, at);
    turn();
  }
  [[nodiscard]] QString shown_cell(const ListView& list, int row, int column) {
    return table(list).model()->index(row - 1, column - 1).data().toString();
  }
  [[nodiscard]] int shown_rows(const ListView& list) { return table(list).model()->rowCount(); }

  // The message box on the screen; null when there is none.
  [[nodiscard]] QMessageBox* box() {
    for (QWidget* top : QApplication::topLevelWidgets()) {
      auto* box = qobject_cast<QMessageBox*>(top);
      if (box != nullptr && box->isVisible()) return box;
    }
    return nullptr;
  }
  // Presses a button of it; the text that it showed.
  QString answer(QMessageBox::StandardButton button) {
    QMessageBox* shown_box = box();
    if (shown_box == nullptr || shown_box->button(button) == nullptr) return {};
    const QString text = shown_box->text();
    QTest::mouseClick(shown_box->button(button), Qt::LeftButton);
    turn();
    return text;
  }
  [[nodiscard]] std::string status() { return form().StatusBar.panel(1); }

 private:
  void open_window() {
    MainWindowOptions options;
    options.tray_present = [this] { return tray_present_; };
    options.profile_folder = folder_.path();
    window_ = std::make_unique<MainWindow>(servent(), std::move(options));
  }

  [[nodiscard]] QAbstractItemView& table(const ListView& list) {
    return widget<QAbstractItemView>(list);
  }
  [[nodiscard]] QPoint row_position(const ListView& list, int row, int column) {
    const QModelIndex index = table(list).model()->index(row - 1, column - 1);
    table(list).scrollTo(index);
    return table(list).visualRect(index).center();
  }

  // What waits in the two loops, back and forth: a click becomes a verb of the form, its effects
  // are shown, and those may wait in turn.
  void turn() {
    for (int round = 0; round < 3; ++round) {
      QCoreApplication::processEvents();
      world().run_for(0);
      if (window_) window_->binding().flush();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  QTemporaryDir folder_;
  QtMessageBoxes boxes_;
  QtTray tray_;
  sim::ServentRig servent_rig_;
  bool tray_present_ = true;
  bool ended_ = false;
  std::unique_ptr<MainWindow> window_;
};

}  // namespace velmora::ui
