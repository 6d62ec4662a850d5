// A command button. One that stands for a colour shows that colour over its face, with its caption
// in whichever of the palette's own colours can be read there. It knows no control; FormBinding
// joins it.
#pragma once

#include <QColor>
#include <QPushButton>

namespace velmora::ui {

class FormButton : public QPushButton {
  Q_OBJECT

 public:
  explicit FormButton(const QString& text, QWidget* parent = nullptr);
  void set_colour(const QColor& colour);  // an invalid one: a plain button

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QColor colour_;
};

}  // namespace velmora::ui
