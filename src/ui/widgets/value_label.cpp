#include "ui/widgets/value_label.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionFocusRect>

namespace velmora::ui {

ValueLabel::ValueLabel(Press press, QWidget* parent) : QLabel(parent), press_(press) {
  setTextFormat(Qt::PlainText);
  if (press == Press::none) {
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    return;
  }
  setFocusPolicy(Qt::StrongFocus);
  setCursor(Qt::PointingHandCursor);
  setForegroundRole(QPalette::Link);
  QFont underlined = font();
  underlined.setUnderline(true);
  setFont(underlined);
}

void ValueLabel::mouseReleaseEvent(QMouseEvent* event) {
  QLabel::mouseReleaseEvent(event);
  if (press_ == Press::click && event->button() == Qt::LeftButton &&
      rect().contains(event->position().toPoint())) {
    emit pressed();
  }
}

void ValueLabel::mouseDoubleClickEvent(QMouseEvent* event) {
  QLabel::mouseDoubleClickEvent(event);
  if (press_ == Press::double_click && event->button() == Qt::LeftButton) emit pressed();
}

void ValueLabel::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (press_ != Press::none && (enter || event->key() == Qt::Key_Space)) {
    emit pressed();
  } else {
    QLabel::keyPressEvent(event);
  }
}

void ValueLabel::paintEvent(QPaintEvent* event) {
  QLabel::paintEvent(event);
  if (press_ == Press::none || !hasFocus()) return;
  QPainter painter(this);
  QStyleOptionFocusRect option;
  option.initFrom(this);
  style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
}

}  // namespace velmora::ui
