// A small window of the program, which the form shows and hides: closing it, or Escape, asks the
// form to hide it, and it is never modal. It stands over the main window, which owns it.
#pragma once

#include <QDialog>
#include <functional>
#include <string>

#include "form/control.h"

namespace velmora::ui {

class FormBinding;

class FormWindow : public QDialog {
  Q_OBJECT

 public:
  // Its content is the business of its maker; `on_show` runs each time just before it appears.
  FormWindow(FormBinding& binding, Window& window, QWidget* parent);

  std::function<void()> on_show;

  void reject() override;

 private:
  void follow();

  FormBinding& binding_;
  Window& window_;
  std::string text_seen_;
};

}  // namespace velmora::ui
