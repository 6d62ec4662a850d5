// The chosen colours on a window that holds one widget of each kind.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QMainWindow>
#include <QTableView>
#include <QVBoxLayout>

#include "ui/appearance.h"
#include "ui/widgets/colours.h"
#include "ui/widgets/form_binding.h"
#include "ui/widgets/form_button.h"
#include "ui/widgets/line_edit.h"
#include "ui/widgets/option_buttons.h"
#include "ui/widgets/value_label.h"

namespace velmora::ui {
namespace {

class Painted : public testing::Test {
 protected:
  Painted() {
    auto* frame = new QGroupBox("frame");
    auto* column = new QVBoxLayout(frame);
    for (QWidget* widget : std::initializer_list<QWidget*>{label_, link_, check_, options_,
                                                           command_, swatch_, field_, list_}) {
      column->addWidget(widget);
    }
    auto* content = new QWidget;
    (new QVBoxLayout(content))->addWidget(frame);
    window_.setCentralWidget(content);
    new Appearance(binding_, window_);
  }
  ~Painted() override { set_desktop({}); }  // the system's own

  void choose(Button& button, std::int32_t colour) {
    button.set_back_colour(colour);
    binding_.flush();
  }
  static void set_desktop(const QPalette& palette) {
    QApplication::setPalette(palette);
    QCoreApplication::processEvents();  // the widgets are told by an event
  }
  static QColor colour(const QWidget* widget, QPalette::ColorRole role) {
    return widget->palette().color(role);
  }

  const QPalette desktop_ = QApplication::palette();
  Form form_;
  FormBinding binding_{form_};
  QMainWindow window_;
  QWidget* label_ = new QLabel("label");
  QWidget* link_ = new ValueLabel(ValueLabel::Press::click);
  QWidget* check_ = binding_.check_box(form_.show_dns);
  OptionButtons* options_ = binding_.options(form_.search_num);
  QWidget* command_ = binding_.button(form_.ver_help);
  QWidget* swatch_ = binding_.button(form_.but_b_sel);
  QWidget* field_ = binding_.line_edit(form_.port_config);
  QWidget* list_ = new QTableView;
};

constexpr std::int32_t kWine = 0x200080;  // red 128, green 0, blue 32
const QColor kWineColour(128, 0, 32);

TEST_F(Painted, EachColourGoesToItsKindsAndBack) {
  struct Case {
    Button& button;
    QPalette::ColorRole role;
    std::vector<QWidget*> painted;
    std::vector<QWidget*> untouched;
  };
  QWidget* frame = label_->parentWidget();
  QWidget* option = options_->button(1);
  const Case table[] = {
      {form_.form_b_sel, QPalette::Window, {frame, check_, option}, {&window_}},
      {form_.form_f_sel, QPalette::WindowText, {frame, label_, check_, option}, {&window_}},
      {form_.form_f_sel, QPalette::Link, {link_}, {&window_}},
      {form_.but_b_sel, QPalette::Button, {command_}, {swatch_, check_, &window_}},
      {form_.list_b_sel, QPalette::Base, {field_, list_}, {check_, label_, &window_}},
      {form_.list_f_sel, QPalette::Text, {field_, list_}, {check_, label_, &window_}},
  };
  for (const Case& c : table) {
    SCOPED_TRACE(c.button.name());
    const QColor before = desktop_.color(c.role);
    const auto expect = [&](const std::vector<QWidget*>& widgets, const QColor& expected) {
      for (const QWidget* widget : widgets) {
        EXPECT_EQ(colour(widget, c.role), expected) << widget->metaObject()->className();
      }
    };
    choose(c.button, kWine);
    expect(c.painted, kWineColour);
    expect(c.untouched, before);
    choose(c.button, kButtonFace);
    expect(c.painted, before);
  }
}

TEST_F(Painted, TextStaysReadableInEveryPalette) {
  QPalette dark(QColor(40, 40, 40), QColor(30, 30, 30));
  dark.setColor(QPalette::WindowText, Qt::white);
  dark.setColor(QPalette::Text, Qt::white);
  dark.setColor(QPalette::ButtonText, Qt::white);
  const auto readable = [](const QWidget* widget, QPalette::ColorRole fore,
                           QPalette::ColorRole back) {
    return contrast(colour(widget, fore), colour(widget, back)) >= 4.5;
  };
  // Backs without a fore: pale, deep, and in between, on a light and then on a dark desktop.
  for (const QPalette& desktop : {desktop_, dark}) {
    set_desktop(desktop);
    for (const std::int32_t back : {0xC0FFFF, 0x400000, 0x0000FF, 0x00FF00}) {
      for (Button* button : {&form_.form_b_sel, &form_.but_b_sel, &form_.list_b_sel}) {
        choose(*button, back);
      }
      EXPECT_TRUE(readable(label_, QPalette::WindowText, QPalette::Window)) << back;
      EXPECT_TRUE(readable(link_, QPalette::Link, QPalette::Window)) << back;
      EXPECT_TRUE(readable(command_, QPalette::ButtonText, QPalette::Button)) << back;
      EXPECT_TRUE(readable(list_, QPalette::Text, QPalette::Base)) << back;
      EXPECT_TRUE(readable(list_, QPalette::Text, QPalette::AlternateBase)) << back;
    }
  }
  // The desktop turns light again under the chosen backs: fores are chosen anew.
  set_desktop(desktop_);
  EXPECT_TRUE(readable(label_, QPalette::WindowText, QPalette::Window));
  for (Button* button : {&form_.form_b_sel, &form_.but_b_sel, &form_.list_b_sel}) {
    choose(*button, kButtonFace);
  }
  EXPECT_EQ(colour(label_, QPalette::WindowText), desktop_.color(QPalette::WindowText));
  set_desktop(dark);
  EXPECT_EQ(colour(label_, QPalette::WindowText), QColor(Qt::white));  // and followed
}

}  // namespace
}  // namespace velmora::ui
