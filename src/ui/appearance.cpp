#include "ui/appearance.h"

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QEvent>
#include <QLineEdit>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>
#include <algorithm>

#include "app/colour_chooser.h"
#include "ui/widgets/colours.h"
#include "ui/widgets/form_binding.h"

namespace velmora::ui {
namespace {

// Sets a pair of roles where a colour was chosen for them. With only a back colour the text takes
// whichever of the desktop's own colours can be read on it; with only a fore colour the back stays
// the desktop's: nobody chose another. Disabled texts stay fainter than others.
void set_pair(QPalette& palette, const QPalette& desktop, const QColor& back, const QColor& fore,
              QPalette::ColorRole back_role,
              std::initializer_list<QPalette::ColorRole> fore_roles) {
  if (back.isValid()) palette.setColor(back_role, back);
  if (!back.isValid() && !fore.isValid()) return;
  const QColor behind = back.isValid() ? back : desktop.color(QPalette::Active, back_role);
  const QColor text = fore.isValid() ? fore : readable_on(behind, desktop);
  for (const QPalette::ColorRole role : fore_roles) {
    palette.setColor(role, text);
    palette.setColor(QPalette::Disabled, role, between(text, behind));
  }
}

// The page buttons are tool buttons with a text; others belong to a field or a strip.
bool is_command_button(const QWidget& widget) {
  const auto* tool = qobject_cast<const QToolButton*>(&widget);
  return qobject_cast<const QPushButton*>(&widget) != nullptr ||
         (tool != nullptr && !tool->text().isEmpty());
}

}  // namespace

Appearance::Appearance(FormBinding& binding, QMainWindow& window)
    : QObject(&window), binding_(binding), form_(binding.form()), window_(window) {
  apply();
  for (Button* button : colour_buttons(form_)) {
    binding.follow(*button, this, [this] { apply_changes(); });
  }
  window.installEventFilter(this);
}

// The window itself keeps the desktop's palette, so its change is the desktop's.
bool Appearance::eventFilter(QObject* watched, QEvent* event) {
  if (watched == &window_ && event->type() == QEvent::PaletteChange) apply();
  return QObject::eventFilter(watched, event);
}

void Appearance::apply_changes() {
  if (chosen() != painted_) apply();
}

Appearance::Colours Appearance::chosen() const {
  Colours colours{};
  std::ranges::transform(colour_buttons(form_), colours.begin(), &Button::back_colour);
  return colours;
}

void Appearance::apply() {
  QWidget* content = window_.centralWidget();
  // A window that was never painted has the desktop's palette as it is.
  const bool plain = std::ranges::all_of(chosen(), [](auto c) { return !to_colour(c).isValid(); });
  if (content == nullptr || (plain && !painted_)) return;
  painted_ = chosen();
  content->setPalette(of_frames());
  content->setAutoFillBackground(to_colour(form_.form_b_sel.back_colour()).isValid());
  for (QWidget* widget : content->findChildren<QWidget*>()) paint(*widget);
}

// Labels, check boxes and option buttons inherit the colours of the frame they stand in.
void Appearance::paint(QWidget& widget) const {
  if (is_command_button(widget)) {
    if (!is_colour_button(widget)) widget.setPalette(of_buttons());
    // A flat button's text would stand on the form's colour, which was not chosen for it.
    if (auto* flat = qobject_cast<QToolButton*>(&widget)) {
      flat->setAutoRaise(!to_colour(form_.form_b_sel.back_colour()).isValid() &&
                         !to_colour(form_.but_b_sel.back_colour()).isValid());
    }
    return;
  }
  const bool is_field = qobject_cast<QLineEdit*>(&widget) != nullptr ||
                        qobject_cast<QPlainTextEdit*>(&widget) != nullptr ||
                        qobject_cast<QAbstractSpinBox*>(&widget) != nullptr ||
                        qobject_cast<QComboBox*>(&widget) != nullptr ||
                        qobject_cast<QAbstractItemView*>(&widget) != nullptr;
  if (is_field) widget.setPalette(of_fields());
}

QPalette Appearance::of_frames() const {
  QPalette palette;
  set_pair(palette, window_.palette(), to_colour(form_.form_b_sel.back_colour()),
           to_colour(form_.form_f_sel.back_colour()), QPalette::Window,
           {QPalette::WindowText, QPalette::Link});
  return palette;
}

QPalette Appearance::of_buttons() const {
  QPalette palette;
  set_pair(palette, window_.palette(), to_colour(form_.but_b_sel.back_colour()), {},
           QPalette::Button, {QPalette::ButtonText});
  return palette;
}

QPalette Appearance::of_fields() const {
  QPalette palette;
  const QColor back = to_colour(form_.list_b_sel.back_colour());
  const QColor fore = to_colour(form_.list_f_sel.back_colour());
  set_pair(palette, window_.palette(), back, fore, QPalette::Base, {QPalette::Text});
  if (back.isValid()) palette.setColor(QPalette::AlternateBase, back);
  if (back.isValid() || fore.isValid()) {
    palette.setColor(QPalette::PlaceholderText, palette.color(QPalette::Disabled, QPalette::Text));
  }
  return palette;
}

bool Appearance::is_colour_button(const QWidget& widget) const {
  for (const Button* button : colour_buttons(form_)) {
    if (binding_.widget(*button) == &widget) return true;
  }
  return false;
}

}  // namespace velmora::ui
