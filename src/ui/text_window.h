// A small window that is nothing but a text which the program writes: the debug log, the unknown
// descriptors. Plain text, read-only; what a person has marked in it stays marked while lines come.
#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <initializer_list>

#include "ui/form_window.h"

class QPlainTextEdit;

namespace velmora::ui {

class TextWindow : public FormWindow {
  Q_OBJECT

 public:
  // The last of the buttons is the one that Enter presses.
  TextWindow(FormBinding& binding, Window& window, std::initializer_list<Button*> buttons,
             QWidget* parent);
  [[nodiscard]] QPlainTextEdit* text() const { return text_; }

 private:
  void show_soon();
  void show_text();

  Window& window_;
  QPlainTextEdit* text_;
  QString shown_;
  QTimer timer_;
  QElapsedTimer since_shown_;
};

}  // namespace velmora::ui
