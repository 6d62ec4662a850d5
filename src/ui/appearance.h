// The five colours that a person chose, painted onto the main window as often as one changes: back
// and fore of its frames with their labels, check boxes and option buttons; back of its command
// buttons; back and fore of its text fields and lists. What was never chosen stays the desktop's
// palette and follows it. The window is not owned; widgets made later inherit the form's colours,
// and apply() paints the rest of them.
#pragma once

#include <QObject>
#include <array>
#include <cstdint>
#include <optional>

#include "form/form.h"

class QMainWindow;
class QPalette;

namespace velmora::ui {

class FormBinding;

class Appearance : public QObject {
  Q_OBJECT

 public:
  Appearance(FormBinding& binding, QMainWindow& window);
  void apply();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  using Colours = std::array<std::int32_t, 5>;

  void apply_changes();
  [[nodiscard]] Colours chosen() const;
  void paint(QWidget& widget) const;
  [[nodiscard]] QPalette of_frames() const;
  [[nodiscard]] QPalette of_buttons() const;
  [[nodiscard]] QPalette of_fields() const;
  [[nodiscard]] bool is_colour_button(const QWidget& widget) const;

  FormBinding& binding_;
  Form& form_;
  QMainWindow& window_;
  std::optional<Colours> painted_;
};

}  // namespace velmora::ui
