// Every kind of control joined to its widget: what the program changes is shown, what a person does
// reaches the form. The form alone, without a servent behind it.
#include <gmock/gmock.h>

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QLabel>
#include <QListView>
#include <QMouseEvent>
#include <QSlider>
#include <QSpinBox>
#include <QTest>
#include <QTimer>
#include <memory>

#include "platform/error.h"
#include "ui/widgets/combo_list_box.h"
#include "ui/widgets/form_binding.h"
#include "ui/widgets/form_button.h"
#include "ui/widgets/line_edit.h"
#include "ui/widgets/list_table.h"
#include "ui/widgets/option_buttons.h"
#include "ui/widgets/panel_bar.h"
#include "ui/widgets/picture_box.h"
#include "ui/widgets/progress_line.h"
#include "ui/widgets/slider_field.h"
#include "ui/widgets/value_label.h"

namespace velmora::ui {
namespace {

using testing::ElementsAre;

class Binding : public testing::Test {
 protected:
  template <class Widget>
  Widget& keep(Widget* widget) {
    widget->setParent(&window_);
    widget->resize(300, 80);
    widget->show();
    return *widget;
  }
  // A posted verb runs and what it changed is shown.
  void settle() {
    QCoreApplication::processEvents();
    binding_->flush();
  }
  static void retype(QLineEdit& edit, const QString& text) {
    edit.selectAll();
    QTest::keyClicks(&edit, text);
  }

  Form form_;
  QWidget window_;
  std::unique_ptr<FormBinding> binding_ = std::make_unique<FormBinding>(form_);
};

TEST_F(Binding, EveryWidgetIsItsControlsNameHelpAndPresence) {
  form_.mascot2.set_visible(false);
  const std::vector<std::pair<Control*, QWidget*>> made = {
      {&form_.port_config, &keep(binding_->line_edit(form_.port_config))},
      {&form_.text_upload, &keep(binding_->text_edit(form_.text_upload))},
      {&form_.show_dns, &keep(binding_->check_box(form_.show_dns))},
      {&form_.search_num, &keep(binding_->options(form_.search_num))},
      {&form_.pgbut, &keep(binding_->page_buttons(form_.pgbut))},
      {&form_.pack_upload, &keep(binding_->slider(form_.pack_upload))},
      {&form_.net_stat, &keep(binding_->label(form_.net_stat))},
      {&form_.upload_config, &keep(binding_->combo_list(form_.upload_config))},
      {&form_.scan_config, &keep(binding_->button(form_.scan_config))},
      {&form_.mascot1, &keep(binding_->picture(form_.mascot1))},
      {&form_.lcache, &keep(binding_->list(form_.lcache))},
  };
  for (const auto& [control, widget] : made) {
    SCOPED_TRACE(control->name());
    EXPECT_EQ(widget->objectName().toStdString(), control->name());
    EXPECT_EQ(widget->accessibleName().toStdString(), control->caption());
    EXPECT_EQ(widget->toolTip().isEmpty(), control->tooltip().empty());
    const QWidget& focused = widget->focusProxy() ? *widget->focusProxy() : *widget;
    const auto* value = dynamic_cast<const Label*>(control);
    EXPECT_EQ(focused.accessibleDescription().toStdString(),
              value != nullptr ? value->text() : control->tooltip());
    EXPECT_EQ(binding_->widget(*control), widget);
    const QLabel& caption = keep(binding_->caption_label(*control));
    EXPECT_EQ(caption.buddy(), widget);
    control->set_enabled(false);
    control->set_visible(false);
    settle();
    EXPECT_TRUE(!widget->isEnabled() && widget->isHidden() && caption.isHidden());
    control->set_enabled(true);
    control->set_visible(true);
    settle();
    EXPECT_TRUE(widget->isEnabled() && !widget->isHidden() && !caption.isHidden());
  }
  QWidget* hidden = binding_->picture(form_.mascot2);
  hidden->setParent(&window_);
  window_.show();
  EXPECT_FALSE(hidden->isVisible());  // hidden from the start, not shown with its parent
}

TEST_F(Binding, TextIsLiveAndEnterEnters) {
  LineEdit& edit = keep(binding_->line_edit(form_.port_config));
  EXPECT_EQ(edit.text(), "6346");
  std::string entered;
  form_.port_config.on_enter = [&] { entered = form_.port_config.text(); };
  retype(edit, "700");
  EXPECT_EQ(form_.port_config.text(), "700");  // as typed, before anything is flushed
  edit.setCursorPosition(1);
  settle();
  EXPECT_EQ(edit.cursorPosition(), 1);  // its own echo leaves the edit alone
  EXPECT_EQ(entered, "");
  QTest::keyClick(&edit, Qt::Key_Return);
  EXPECT_EQ(entered, "");  // handlers run after the widget's own event
  settle();
  EXPECT_EQ(entered, "700");
  form_.port_config.set_text("6346");
  settle();
  EXPECT_EQ(edit.text(), "6346");

  TextEdit& lines = keep(binding_->text_edit(form_.text_upload));
  lines.moveCursor(QTextCursor::End);
  QTest::keyClicks(&lines, "x");
  EXPECT_EQ(form_.text_upload.text(), "I'm stopping your download because...\r\nx");
}

TEST_F(Binding, BytesStayWhatTheyWere) {
  struct Case {
    const char* bytes;
    QString shown;
    const char* with_x;  // after an "x" is typed at the end
  };
  const Case table[] = {{"/m/caf\xE9", "/m/caf\u00E9", "/m/caf\xE9x"},
                        {"/m/caf\xC3\xA9", "/m/caf\u00E9", "/m/caf\xC3\xA9x"}};
  LineEdit& edit = keep(binding_->line_edit(form_.down_config));
  for (const Case& c : table) {
    form_.down_config.set_text(c.bytes);
    settle();
    EXPECT_EQ(edit.text(), c.shown);
    QTest::keyClick(&edit, Qt::Key_Return);
    settle();
    EXPECT_EQ(form_.down_config.text(), c.bytes);
    edit.end(false);
    QTest::keyClicks(&edit, "x");
    EXPECT_EQ(form_.down_config.text(), c.with_x);
  }
}

TEST_F(Binding, BoxesAndChoices) {
  QCheckBox& box = keep(binding_->check_box(form_.show_dns));
  form_.show_dns.set_checked(true);
  settle();
  EXPECT_TRUE(box.isChecked());
  QTest::keyClick(&box, Qt::Key_Space);
  EXPECT_FALSE(form_.show_dns.checked());
  // The program ticks it just before the person does: what the person wished stands.
  form_.show_dns.set_checked(true);
  QTest::keyClick(&box, Qt::Key_Space);
  settle();
  EXPECT_TRUE(form_.show_dns.checked() && box.isChecked());

  OptionButtons& slots_row = keep(binding_->options(form_.search_num));
  PageButtons& pages = keep(binding_->page_buttons(form_.pgbut));
  form_.search_num.choose(3);
  form_.pgbut.choose(6);
  settle();
  EXPECT_TRUE(slots_row.button(3)->isChecked() && pages.button(6)->isChecked());
  slots_row.button(2)->click();
  pages.button(0)->click();
  EXPECT_EQ(form_.search_num.chosen(), 2);
  EXPECT_EQ(form_.pgbut.chosen(), 0);
}

TEST_F(Binding, SlidersReachEveryValueAndRoundSizes) {
  SliderField& field = keep(binding_->slider(form_.pack_upload));
  EXPECT_EQ(field.number()->value(), 4096);
  field.slider()->triggerAction(QSlider::SliderPageStepAdd);
  EXPECT_EQ(form_.pack_upload.position(), 8192);  // a page is a doubling
  field.slider()->triggerAction(QSlider::SliderToMaximum);
  EXPECT_EQ(form_.pack_upload.position(), 1048576);
  field.slider()->triggerAction(QSlider::SliderToMinimum);
  EXPECT_EQ(form_.pack_upload.position(), 1);
  // Step by step out of the low end, where several steps stand for one byte.
  for (int step = 0; step < 16; ++step) QTest::keyClick(field.slider(), Qt::Key_Right);
  settle();
  EXPECT_EQ(form_.pack_upload.position(), 2);
  field.number()->selectAll();
  QTest::keyClicks(field.number(), "12345");
  EXPECT_EQ(form_.pack_upload.position(), 2);  // half a number is no wish
  QTest::keyClick(field.number(), Qt::Key_Return);
  settle();
  EXPECT_EQ(form_.pack_upload.position(), 12345);  // not pulled to a step of the slider
  form_.pack_upload.set_position(64);
  settle();
  EXPECT_EQ(field.number()->value(), 64);
  EXPECT_EQ(field.slider()->value(), 96);
}

TEST_F(Binding, LabelsShowAndReactAsWritten) {
  int clicks = 0;
  form_.unknown_stat.on_click = form_.s_debug.on_click = [&] { ++clicks; };
  const auto clicks_after = [&](auto action) {
    clicks = 0;
    action();
    settle();
    return clicks;
  };
  QWidget& count = keep(binding_->label(form_.unknown_stat));
  QWidget& debug = keep(binding_->label(form_.s_debug));
  QWidget& plain = keep(binding_->label(form_.net_stat));
  EXPECT_EQ(clicks_after([&] { QTest::mouseClick(&count, Qt::LeftButton); }), 1);
  EXPECT_EQ(clicks_after([&] { QTest::mouseClick(&debug, Qt::LeftButton); }), 0);
  EXPECT_EQ(clicks_after([&] { QTest::mouseDClick(&debug, Qt::LeftButton); }), 1);
  for (QWidget* link : {&count, &debug}) {
    EXPECT_TRUE(link->focusPolicy() & Qt::TabFocus);
    EXPECT_EQ(clicks_after([&] { QTest::keyClick(link, Qt::Key_Return); }), 1);
  }
  EXPECT_EQ(clicks_after([&] { QTest::mouseClick(&plain, Qt::LeftButton); }), 0);
  form_.net_stat.set_text("<b>1\xE2\x80\xAE</b>");
  settle();
  EXPECT_EQ(dynamic_cast<ValueLabel&>(plain).text(), "<b>1\\u202E</b>");
  EXPECT_EQ(dynamic_cast<ValueLabel&>(plain).textFormat(), Qt::PlainText);
}

TEST_F(Binding, ComboListAddsAndRemoves) {
  form_.cachefilter_config.on_enter = [&] {
    form_.cachefilter_config.add(form_.cachefilter_config.text());
    form_.cachefilter_config.set_text("");
  };
  form_.cachefilter_config.on_delete = [&](std::size_t row) {
    form_.cachefilter_config.remove_item(row);
  };
  ComboListBox& box = keep(binding_->combo_list(form_.cachefilter_config));
  QAbstractItemModel& model = *box.rows()->model();
  const QAbstractItemModelTester tester(&model);
  for (const char* item : {"10.", "172.16.", "192.168."}) {
    QTest::keyClicks(box.edit(), item);
    QTest::keyClick(box.edit(), Qt::Key_Return);
    settle();
  }
  EXPECT_EQ(box.edit()->text(), "");
  EXPECT_EQ(model.rowCount(), 3);
  box.rows()->setCurrentIndex(model.index(1, 0));
  QTest::keyClick(box.rows(), Qt::Key_Delete);
  settle();
  EXPECT_THAT(form_.cachefilter_config.items(), ElementsAre("10.", "192.168."));
  EXPECT_EQ(box.rows()->currentIndex().data().toString(), "192.168.");
  form_.cachefilter_config.clear();
  EXPECT_EQ(model.index(0, 0).data(), QVariant());  // gone, and not yet refreshed
  settle();
  QTest::keyClick(box.rows(), Qt::Key_Delete);
  EXPECT_EQ(model.rowCount(), 0);
}

TEST_F(Binding, ButtonsPicturesProgressAndPanels) {
  FormButton& button = keep(binding_->button(form_.form_b_sel));
  form_.form_b_sel.set_back_colour(0x0000C8);  // red comes first
  settle();
  EXPECT_EQ(button.grab().toImage().pixelColor(6, 6), QColor(200, 0, 0));

  PictureBox& picture = keep(binding_->picture(form_.mascot1));
  int moves = 0;
  form_.mascot1.on_move = [&] {
    ++moves;
    form_.mascot1.set_visible(false);
  };
  for (int move = 0; move < 2; ++move) {  // the second comes when it has gone already
    QMouseEvent event(QEvent::MouseMove, {5, 5}, {5, 5}, Qt::NoButton, {}, {});
    QCoreApplication::sendEvent(&picture, &event);
  }
  settle();
  EXPECT_EQ(moves, 1);
  EXPECT_TRUE(picture.isHidden());

  ProgressLine& line = keep(binding_->progress(form_.scan_progress));
  form_.scan_progress.show("57 files, /a%p", 3, 4);
  settle();
  EXPECT_EQ(line.text(), "57 files, /a%p");
  EXPECT_EQ(line.value() * 4, line.maximum() * 3);
  form_.scan_progress.show("58 files", 0, 0);
  settle();
  EXPECT_EQ(line.maximum(), 0);  // busy
  form_.scan_progress.finish();
  settle();
  EXPECT_TRUE(line.isHidden());

  PanelBar& bar = keep(binding_->status_bar(form_.StatusBar));
  form_.scan_config.on_click = [] { throw PlatformError(Errc::disk_full); };
  QTest::mouseClick(&keep(binding_->button(form_.scan_config)), Qt::LeftButton);
  settle();
  EXPECT_EQ(form_.StatusBar.panel(1), PlatformError(Errc::disk_full).description());
  EXPECT_EQ(bar.panel(1)->text().toStdString(), form_.StatusBar.panel(1));
}

TEST_F(Binding, StatusGrowsPaleAndANoteGoes) {
  PanelBar& bar = keep(binding_->status_bar(form_.StatusBar));
  QTimer& age = *bar.findChild<QTimer*>();
  const auto let_it_grow_old = [&] {
    age.setInterval(0);
    settle();
    settle();
    age.setInterval(PanelBar::kFreshMs);
  };
  form_.StatusBar.set_panel(1, "lasting");
  settle();
  EXPECT_FALSE(bar.panel(1)->old());
  form_.StatusBar.set_panel(2, "Connections: 1 in, 2 out");
  let_it_grow_old();
  EXPECT_EQ(bar.panel(1)->text(), "lasting");
  EXPECT_TRUE(bar.panel(1)->old());
  form_.StatusBar.set_panel(2, "Connections: 0 in, 2 out");
  settle();
  EXPECT_TRUE(bar.panel(1)->old());  // nothing was said
  form_.StatusBar.set_panel(1, "lasting");
  settle();
  EXPECT_FALSE(bar.panel(1)->old());  // it was said again

  form_.StatusBar.set_note("for the moment");
  settle();
  EXPECT_EQ(bar.panel(1)->text(), "for the moment");
  let_it_grow_old();
  EXPECT_EQ(bar.panel(1)->text(), "");

  form_.StatusBar.set_note("for the moment");
  form_.StatusBar.set_panel(1, "lasting");
  let_it_grow_old();
  EXPECT_EQ(bar.panel(1)->text(), "lasting");
}

TEST_F(Binding, ChangesAreShownTogetherAndMayEndTheProgram) {
  int shows = 0;
  QObject owner;
  binding_->follow(form_.net_stat, &owner, [&] { ++shows; });
  for (int i = 0; i < 1000; ++i) form_.net_stat.set_text(std::to_string(i));
  EXPECT_EQ(shows, 1);
  binding_->flush();
  EXPECT_EQ(shows, 2);

  form_.ver_help.on_click = [&] { binding_.reset(); };
  FormButton& button = keep(binding_->button(form_.ver_help));
  button.click();
  ASSERT_TRUE(binding_);  // not inside the button's own signal
  QCoreApplication::processEvents();
  EXPECT_FALSE(binding_);
  form_.net_stat.set_text("after");  // nobody listens any more
  button.click();
}

}  // namespace
}  // namespace velmora::ui
