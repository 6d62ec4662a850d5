#include "ui/page_layout.h"

#include <QFontMetrics>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>

#include "ui/widgets/form_binding.h"

namespace velmora::ui {

QHBoxLayout* in_line(const QList<QWidget*>& widgets) {
  auto* line = new QHBoxLayout;
  for (QWidget* widget : widgets) {
    if (widget == nullptr) {
      line->addStretch();
    } else {
      line->addWidget(widget);
    }
  }
  return line;
}

QGroupBox* framed(const QString& title, QLayout* content) {
  auto* frame = new QGroupBox(title);
  frame->setLayout(content);
  return frame;
}

void add_field(QFormLayout* rows, FormBinding& bind, Control& control, QLayout* field) {
  rows->addRow(bind.caption_label(control), field);
}

void add_field(QFormLayout* rows, FormBinding& bind, Control& control, QWidget* field) {
  rows->addRow(bind.caption_label(control), field);
}

QWidget* captioned(FormBinding& bind, Control& control, QWidget* field) {
  auto* pair = new QWidget;
  auto* line = in_line({bind.caption_label(control), field});
  line->setContentsMargins(0, 0, 0, 0);
  pair->setLayout(line);
  pair->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
  return pair;
}

QFormLayout* form_rows() {
  auto* rows = new QFormLayout;
  rows->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  return rows;
}

QWidget* narrow(QWidget* field, int characters) {
  const int text = field->fontMetrics().horizontalAdvance(QLatin1Char('0')) * characters;
  field->setMaximumWidth(text + field->fontMetrics().height() * 3 / 2);
  return field;
}

QWidget* named_by_tooltip(QWidget* button) {
  button->setAccessibleName(button->accessibleDescription());  // the tool-tip without markup
  return button;
}

QWidget* small_button(QWidget* button) {
  button->setMaximumWidth(button->fontMetrics().height() * 2);
  return named_by_tooltip(button);
}

}  // namespace velmora::ui
