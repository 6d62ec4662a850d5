#include "ui/widgets/picture_box.h"

#include <QPainter>

namespace velmora::ui {

PictureBox::PictureBox(QWidget* parent) : QWidget(parent) {
  setMouseTracking(true);
  QSizePolicy fixed(QSizePolicy::Fixed, QSizePolicy::Fixed);
  fixed.setRetainSizeWhenHidden(true);
  setSizePolicy(fixed);
}

void PictureBox::set_picture(const QIcon& picture, const QSize& size) {
  picture_ = picture;
  size_ = size;
  updateGeometry();
  update();
}

// Moves alone count: where two pictures take turns at one place, an enter event would follow every
// turn by itself.
void PictureBox::mouseMoveEvent(QMouseEvent* /*event*/) { emit moved_over(); }

void PictureBox::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  picture_.paint(&painter, rect());
}

}  // namespace velmora::ui
