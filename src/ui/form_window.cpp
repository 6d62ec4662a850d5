#include "ui/form_window.h"

#include "ui/widgets/form_binding.h"
#include "ui/widgets/text.h"

namespace velmora::ui {

FormWindow::FormWindow(FormBinding& binding, Window& window, QWidget* parent)
    : QDialog(parent), binding_(binding), window_(window), text_seen_(window.text()) {
  setObjectName(QString::fromStdString(window.name()));
  setAccessibleName(form_text(window.caption()));
  setAccessibleDescription(form_text(window.tooltip()));
  setWindowTitle(form_text(window.caption()));
  binding.follow(window, this, [this] { follow(); });
}

// The close control comes here as well.
void FormWindow::reject() {
  binding_.press([this_window = &window_] { this_window->hide(); });
}

void FormWindow::follow() {
  const bool new_text = window_.text() != text_seen_;
  if (new_text) text_seen_ = window_.text();
  if (!window_.shown()) {
    hide();
    return;
  }
  if (!isVisible()) {
    if (on_show) on_show();
    show();
  } else if (new_text) {
    return;  // not wanted in front because of every new line
  }
  raise();
  activateWindow();
}

}  // namespace velmora::ui
