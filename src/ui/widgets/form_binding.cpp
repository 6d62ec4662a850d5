#include "ui/widgets/form_binding.h"

#include <QLabel>
#include <QWidget>
#include <algorithm>
#include <utility>

#include "platform/trap.h"
#include "ui/widgets/text.h"

namespace velmora::ui {
namespace {

constexpr int kFlushEveryMs = 16;  // a picture of a screen that shows 60 a second

// Enabled and visible as the control. A widget that has no parent yet must not be shown: it would
// be a window of its own.
void follow_presence(FormBinding& binding, Control& control, QWidget& widget) {
  binding.follow(control, &widget, [&control, &widget] {
    widget.setEnabled(control.enabled());
    if (!control.visible()) widget.hide();
    if (control.visible() && widget.parentWidget() != nullptr) widget.show();
  });
}

}  // namespace

FormBinding::FormBinding(Form& form, QObject* parent)
    : QObject(parent), form_(form), watch_(form.watch([this](Control& c) { note(c); })) {
  timer_.setSingleShot(true);
  timer_.setTimerType(Qt::PreciseTimer);
  connect(&timer_, &QTimer::timeout, this, &FormBinding::flush);
}

FormBinding::~FormBinding() { form_.unwatch(watch_); }

QWidget* FormBinding::widget(const Control& control) const {
  const auto found = widgets_.find(&control);
  return found == widgets_.end() ? nullptr : found->second.data();
}

void FormBinding::bind(Control& control, QWidget& widget) {
  widget.setObjectName(QString::fromStdString(control.name()));
  widget.setAccessibleName(form_text(control.caption()));
  widget.setToolTip(plain_tooltip(form_text(control.tooltip())));
  // Where none is set, screen readers read the tool-tip out, with the markup that wraps long ones.
  widget.setAccessibleDescription(form_text(control.tooltip()));
  if (QWidget* inner = widget.focusProxy()) {
    inner->setAccessibleDescription(widget.accessibleDescription());
  }
  widgets_[&control] = &widget;
  const auto caption = captions_.find(&control);
  if (caption != captions_.end() && caption->second) caption->second->setBuddy(&widget);
  follow_presence(*this, control, widget);
}

void FormBinding::follow(Control& control, QObject* owner, std::function<void()> refresh) {
  refresh();
  followers_[&control].push_back(
      {owner, std::make_shared<std::function<void()>>(std::move(refresh))});
}

QLabel* FormBinding::caption_label(Control& control) {
  auto* label = new QLabel(form_caption(control.caption()));
  label->setTextFormat(Qt::PlainText);
  label->setToolTip(plain_tooltip(form_text(control.tooltip())));
  captions_[&control] = label;
  if (QWidget* buddy = widget(control)) label->setBuddy(buddy);
  follow_presence(*this, control, *label);
  return label;
}

void FormBinding::apply(const std::function<void()>& verb) {
  const std::string error = trapped("", verb);
  if (!error.empty()) form_.StatusBar.set_panel(1, error);
}

void FormBinding::press(std::function<void()> verb) {
  QMetaObject::invokeMethod(
      this,
      [alive = QPointer<FormBinding>(this), verb = std::move(verb)] {
        alive->apply(verb);  // which may end the window
        if (alive) alive->flush();
      },
      Qt::QueuedConnection);
}

void FormBinding::note(Control& control) {
  if (!followers_.contains(&control)) return;
  changed_.insert(&control);
  if (timer_.isActive()) return;
  const qint64 since = since_flush_.isValid() ? since_flush_.elapsed() : kFlushEveryMs;
  timer_.start(static_cast<int>(std::max<qint64>(0, kFlushEveryMs - since)));
}

// What a refresh changes in its turn waits for the next flush.
void FormBinding::flush() {
  timer_.stop();
  since_flush_.start();
  for (const Control* control : std::exchange(changed_, {})) {
    std::vector<Follower>& followers = followers_[control];
    std::erase_if(followers, [](const Follower& follower) { return !follower.owner; });
    for (std::size_t i = 0; i < followers.size(); ++i) {
      if (!followers[i].owner) continue;          // it went in this flush
      const auto refresh = followers[i].refresh;  // it may add a follower
      apply(*refresh);
    }
  }
}

}  // namespace velmora::ui
