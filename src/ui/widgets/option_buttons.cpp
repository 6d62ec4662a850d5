#include "ui/widgets/option_buttons.h"

#include <QHBoxLayout>
#include <QRadioButton>

namespace velmora::ui {
namespace {

QHBoxLayout* bare_row(QWidget* widget) {
  auto* row = new QHBoxLayout(widget);
  row->setContentsMargins(0, 0, 0, 0);
  return row;
}

// Checking by program emits no idClicked, so nothing comes back.
void check(const QButtonGroup& group, int number) {
  if (QAbstractButton* button = group.button(number)) button->setChecked(true);
}

}  // namespace

OptionButtons::OptionButtons(const QStringList& texts, int first, QWidget* parent)
    : QWidget(parent) {
  QHBoxLayout* row = bare_row(this);
  for (int number = first; const QString& text : texts) {
    auto* button = new QRadioButton(text);
    group_.addButton(button, number++);
    row->addWidget(button);
  }
  row->addStretch();
  connect(&group_, &QButtonGroup::idClicked, this, &OptionButtons::chosen);
}

void OptionButtons::set_chosen(int number) { check(group_, number); }

PageButtons::PageButtons(const QStringList& texts, int first, QWidget* parent) : QWidget(parent) {
  QHBoxLayout* row = bare_row(this);
  row->setSpacing(2);
  for (int number = first; const QString& text : texts) {
    auto* button = new QToolButton;
    button->setText(text);
    button->setCheckable(true);
    button->setAutoRaise(true);
    button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    button->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    group_.addButton(button, number++);
    row->addWidget(button);
  }
  connect(&group_, &QButtonGroup::idClicked, this, &PageButtons::chosen);
}

void PageButtons::set_chosen(int number) { check(group_, number); }

QToolButton* PageButtons::button(int number) const {
  return qobject_cast<QToolButton*>(group_.button(number));
}

}  // namespace velmora::ui
