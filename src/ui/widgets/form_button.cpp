#include "ui/widgets/form_button.h"

#include <QStyleOptionButton>
#include <QStylePainter>

#include "ui/widgets/colours.h"

namespace velmora::ui {

FormButton::FormButton(const QString& text, QWidget* parent) : QPushButton(text, parent) {}

void FormButton::set_colour(const QColor& colour) {
  colour_ = colour;
  update();
}

// Styles mix a button's colour into shades of their own; a chosen colour is shown as it is.
void FormButton::paintEvent(QPaintEvent* event) {
  if (!colour_.isValid()) {
    QPushButton::paintEvent(event);
    return;
  }
  QStylePainter painter(this);
  QStyleOptionButton option;
  initStyleOption(&option);
  painter.drawControl(QStyle::CE_PushButtonBevel, option);
  const QRect face = rect().adjusted(3, 3, -3, -3);
  painter.fillRect(face, colour_);
  painter.setPen(readable_on(colour_, option.palette));
  painter.drawText(face, Qt::AlignCenter | Qt::TextShowMnemonic, text());
  if (hasFocus()) {
    option.rect = face;
    QStyleOptionFocusRect focus;
    focus.QStyleOption::operator=(option);
    painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
  }
}

}  // namespace velmora::ui
