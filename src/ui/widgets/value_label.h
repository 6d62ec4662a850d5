// A label that shows a value: plain text, to be selected and copied. One that reacts to a click (or
// only to a double click) looks like a link, and is reached and pressed by keyboard as well. It
// knows no control; FormBinding joins it.
#pragma once

#include <QLabel>

namespace velmora::ui {

class ValueLabel : public QLabel {
  Q_OBJECT

 public:
  enum class Press { none, click, double_click };
  explicit ValueLabel(Press press, QWidget* parent = nullptr);

 signals:
  void pressed();

 protected:
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  Press press_;
};

}  // namespace velmora::ui
