// The factories of FormBinding: which widget shows a control, and which verb each signal becomes.
#include <QCheckBox>
#include <QStringList>
#include <utility>

#include "ui/widgets/colours.h"
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
#include "ui/widgets/text.h"
#include "ui/widgets/value_label.h"

namespace velmora::ui {
namespace {

QStringList option_texts(const OptionGroup& group) {
  QStringList texts;
  for (const std::string& option : group.options()) texts += form_caption(option);
  return texts;
}

template <class Buttons>
Buttons* bound_options(FormBinding& binding, OptionGroup& group) {
  auto* buttons = new Buttons(option_texts(group), group.first());
  binding.bind(group, *buttons);
  binding.follow(group, buttons, [&group, buttons] { buttons->set_chosen(group.chosen()); });
  QObject::connect(buttons, &Buttons::chosen, &binding, [&binding, &group](int number) {
    binding.apply([&] { group.choose(number); });
  });
  return buttons;
}

template <class Field, class Edit>
void join_text(FormBinding& binding, Field& field, Edit* edit) {
  binding.follow(field, edit, [&field, edit] { edit->show_bytes(field.text()); });
  QObject::connect(edit, &Edit::edited, &binding, [&binding, &field, edit] {
    binding.apply([&] { field.set_text(edit->bytes()); });
  });
}

}  // namespace

LineEdit* FormBinding::line_edit(TextField& field) {
  auto* edit = new LineEdit;
  bind(field, *edit);
  join_text(*this, field, edit);
  connect(edit, &QLineEdit::returnPressed, this,
          [this, &field, edit] { press([&field, text = edit->bytes()] { field.enter(text); }); });
  return edit;
}

TextEdit* FormBinding::text_edit(TextField& field) {
  auto* edit = new TextEdit;
  bind(field, *edit);
  join_text(*this, field, edit);
  return edit;
}

QCheckBox* FormBinding::check_box(CheckBox& box) {
  auto* widget = new QCheckBox(form_caption(box.caption()));
  bind(box, *widget);
  follow(box, widget, [&box, widget] { widget->setChecked(box.checked()); });
  // Not click(), which toggles: the state that the person saw and wished counts.
  connect(widget, &QCheckBox::clicked, this,
          [this, &box](bool checked) { apply([&] { box.set_checked(checked); }); });
  return widget;
}

OptionButtons* FormBinding::options(OptionGroup& group) {
  auto* buttons = bound_options<OptionButtons>(*this, group);
  // "2" alone says little where it is read out.
  for (int number = group.first(); number <= group.last(); ++number) {
    QAbstractButton* button = buttons->button(number);
    button->setAccessibleName(buttons->accessibleName() + ' ' + button->text());
  }
  return buttons;
}

PageButtons* FormBinding::page_buttons(OptionGroup& group) {
  return bound_options<PageButtons>(*this, group);
}

SliderField* FormBinding::slider(Slider& slider, bool with_number) {
  auto* field = new SliderField(slider.minimum(), slider.maximum(), with_number);
  bind(slider, *field);
  field->set_name(form_text(slider.caption()));
  follow(slider, field, [&slider, field] { field->set_value(slider.position()); });
  connect(field, &SliderField::moved, this,
          [this, &slider, field] { apply([&] { slider.set_position(field->value()); }); });
  return field;
}

ValueLabel* FormBinding::label(Label& label) {
  using Press = ValueLabel::Press;
  const Press click = &label == &form_.s_debug ? Press::double_click : Press::click;
  auto* widget = new ValueLabel(label.on_click ? click : Press::none);
  bind(label, *widget);
  follow(label, widget, [&label, widget] {
    widget->setText(shown_lines(label.text()));
    // The caption is the name, so the value has to be the description.
    widget->setAccessibleDescription(widget->text());
  });
  connect(widget, &ValueLabel::pressed, this,
          [this, &label] { press([&label] { label.click(); }); });
  return widget;
}

ComboListBox* FormBinding::combo_list(ComboList& list) {
  auto* box = new ComboListBox(list.items());
  bind(list, *box);
  box->set_name(form_text(list.caption()));
  join_text(*this, list, box->edit());
  follow(list, box, [box] { box->refresh(); });
  connect(box, &ComboListBox::entered, this, [this, &list, box] {
    press([&list, text = box->edit()->bytes()] { list.enter(text); });
  });
  connect(box, &ComboListBox::remove_wanted, this,
          [this, &list](std::size_t row) { press([&list, row] { list.press_delete(row); }); });
  return box;
}

FormButton* FormBinding::button(Button& button) {
  auto* widget = new FormButton(form_caption(button.caption()));
  bind(button, *widget);
  follow(button, widget,
         [&button, widget] { widget->set_colour(to_colour(button.back_colour())); });
  connect(widget, &QPushButton::clicked, this,
          [this, &button] { press([&button] { button.click(); }); });
  return widget;
}

PictureBox* FormBinding::picture(Picture& picture) {
  auto* box = new PictureBox;
  bind(picture, *box);
  connect(box, &PictureBox::moved_over, this,
          [this, &picture] { press([&picture] { picture.move_over(); }); });
  return box;
}

ProgressLine* FormBinding::progress(Progress& progress) {
  auto* line = new ProgressLine;
  bind(progress, *line);
  follow(progress, line, [&progress, line] {
    line->show_progress(shown(progress.text()), progress.done(), progress.total());
  });
  return line;
}

ListTable* FormBinding::list(ListView& list) {
  auto* table = new ListTable(list);
  bind(list, *table);
  follow(list, table, [table] { table->refresh(); });
  table->on_error = [this, alive = QPointer<FormBinding>(this)](const QString& error) {
    if (alive) form_.StatusBar.set_panel(1, bytes(error));
  };
  return table;
}

PanelBar* FormBinding::status_bar(StatusBar& bar) {
  auto* panels = new PanelBar(bar.panels());
  bind(bar, *panels);
  follow(bar, panels, [&bar, panels, times_said = std::uint64_t{0}]() mutable {
    for (std::size_t i = 1; i <= bar.panels(); ++i) panels->set_panel(i, shown(bar.panel(i)));
    if (bar.times_said() != std::exchange(times_said, bar.times_said())) panels->freshen();
  });
  connect(panels, &PanelBar::grown_old, this, [&bar] { bar.drop_note(); });
  return panels;
}

}  // namespace velmora::ui
