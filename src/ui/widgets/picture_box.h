// A picture that notices the mouse moving over it. It keeps its place while it is hidden, so that
// nothing around it jumps. The window gives it its drawing. It knows no control; FormBinding joins
// it.
#pragma once

#include <QIcon>
#include <QWidget>

namespace velmora::ui {

class PictureBox : public QWidget {
  Q_OBJECT

 public:
  explicit PictureBox(QWidget* parent = nullptr);
  void set_picture(const QIcon& picture, const QSize& size);
  [[nodiscard]] QSize sizeHint() const override { return size_; }

 signals:
  void moved_over();

 protected:
  void mouseMoveEvent(QMouseEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  QIcon picture_;
  QSize size_{64, 64};
};

}  // namespace velmora::ui
