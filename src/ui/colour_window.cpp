#include "ui/colour_window.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>

#include "ui/widgets/colours.h"
#include "ui/widgets/form_binding.h"
#include "ui/widgets/form_button.h"
#include "ui/widgets/slider_field.h"
#include "ui/widgets/value_label.h"

namespace velmora::ui {

ColourWindow::ColourWindow(FormBinding& binding, QWidget* parent)
    : FormWindow(binding, binding.form().frmColor, parent), form_(binding.form()) {
  auto* grid = new QGridLayout(this);
  const auto add_row = [&](Slider& part, Label& number) {
    const int row = grid->rowCount();
    grid->addWidget(binding.caption_label(part), row, 0);
    SliderField* bar = binding.slider(part, false);
    bar->setMinimumWidth(fontMetrics().averageCharWidth() * 40);
    grid->addWidget(bar, row, 1);
    ValueLabel* label = binding.label(number);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("0000")));
    grid->addWidget(label, row, 2);
    binding.follow(part, this, [this] { paint_preview(); });
  };
  preview_ = binding.label(form_.preview);
  preview_->setAlignment(Qt::AlignCenter);
  preview_->setFrameShape(QFrame::StyledPanel);
  preview_->setAutoFillBackground(true);
  preview_->setMinimumHeight(fontMetrics().lineSpacing() * 4);
  add_row(form_.Red, form_.Red_label);
  add_row(form_.Green, form_.Green_label);
  add_row(form_.Blue, form_.Blue_label);
  grid->addWidget(preview_, grid->rowCount(), 0, 1, 3);
  auto* row = new QDialogButtonBox;
  FormButton* ok = binding.button(form_.ok);
  row->addButton(ok, QDialogButtonBox::ActionRole);
  ok->setDefault(true);
  grid->addWidget(row, grid->rowCount(), 0, 1, 3);
}

void ColourWindow::paint_preview() {
  const QColor colour =
      QColor::fromRgb(form_.Red.position(), form_.Green.position(), form_.Blue.position());
  QPalette painted;
  painted.setColor(QPalette::Window, colour);
  painted.setColor(QPalette::WindowText, readable_on(colour, palette()));
  preview_->setPalette(painted);
}

}  // namespace velmora::ui
