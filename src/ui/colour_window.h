// The colour chooser: three bars for red, green and blue, the number beside each, and a preview in
// the colour that they make. What the colour is for, the form knows.
#pragma once

#include "form/form.h"
#include "ui/form_window.h"

namespace velmora::ui {

class ValueLabel;

class ColourWindow : public FormWindow {
  Q_OBJECT

 public:
  ColourWindow(FormBinding& binding, QWidget* parent);

 private:
  void paint_preview();

  Form& form_;
  ValueLabel* preview_;
};

}  // namespace velmora::ui
