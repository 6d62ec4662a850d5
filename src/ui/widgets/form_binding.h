// The link between the form and its widgets, both ways. Each factory makes the ONE widget of one
// control: named like the control, with its caption as accessible name, its tool-tip, enabled and
// visible as the form says; what a person does with it becomes a verb of the form. The binding
// hears the form's changes, and shows them together, at most every 16 ms. It owns no widget (their
// parents do) and no control; the form outlives it. An engine error of a verb goes to panel 1.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <functional>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "form/form.h"

class QCheckBox;
class QLabel;
class QWidget;

namespace velmora::ui {

class ComboListBox;
class FormButton;
class LineEdit;
class ListTable;
class OptionButtons;
class PageButtons;
class PanelBar;
class PictureBox;
class ProgressLine;
class SliderField;
class TextEdit;
class ValueLabel;

class FormBinding : public QObject {
  Q_OBJECT

 public:
  explicit FormBinding(Form& form, QObject* parent = nullptr);
  ~FormBinding() override;

  [[nodiscard]] Form& form() const { return form_; }

  LineEdit* line_edit(TextField& field);  // every edit as typed; Enter enters
  TextEdit* text_edit(TextField& field);  // for texts of many lines
  QCheckBox* check_box(CheckBox& box);
  OptionButtons* options(OptionGroup& group);     // a row of option buttons
  PageButtons* page_buttons(OptionGroup& group);  // a row of buttons with icons
  SliderField* slider(Slider& slider, bool with_number = true);
  ValueLabel* label(Label& label);  // the value; its caption is caption_label's
  ComboListBox* combo_list(ComboList& list);
  FormButton* button(Button& button);
  PictureBox* picture(Picture& picture);
  ProgressLine* progress(Progress& progress);
  ListTable* list(ListView& list);
  PanelBar* status_bar(StatusBar& bar);
  // A label with the caption of the control, buddy of its widget whichever is made first.
  QLabel* caption_label(Control& control);

  // The widget that stands for a control; null while there is none.
  [[nodiscard]] QWidget* widget(const Control& control) const;

  // Names the widget for the control and follows what all controls have.
  void bind(Control& control, QWidget& widget);
  // Runs `refresh` at once and after every change of the control, as long as `owner` lives.
  void follow(Control& control, QObject* owner, std::function<void()> refresh);

  // Runs what a person did inside the call: for the value of a field, a box, a slider.
  void apply(const std::function<void()>& verb);
  // Runs it from the event loop, after the widget's own handler has returned: the program may end
  // there. Then shows what changed.
  void press(std::function<void()> verb);

  // Shows the changes noted so far, now.
  void flush();

 private:
  struct Follower {
    QPointer<QObject> owner;
    std::shared_ptr<std::function<void()>> refresh;  // which may keep a state of its own
  };

  void note(Control& control);

  Form& form_;
  int watch_;
  std::unordered_map<const Control*, std::vector<Follower>> followers_;
  std::unordered_map<const Control*, QPointer<QWidget>> widgets_;
  std::unordered_map<const Control*, QPointer<QLabel>> captions_;
  std::unordered_set<Control*> changed_;
  QTimer timer_;
  QElapsedTimer since_flush_;
};

}  // namespace velmora::ui
