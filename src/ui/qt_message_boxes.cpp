#include "ui/qt_message_boxes.h"

#include <QMessageBox>
#include <algorithm>
#include <cstdio>
#include <utility>

#include "platform/visible_text.h"
#include "ui/widgets/text.h"

namespace velmora::ui {
namespace {

constexpr std::size_t kMostOpen = 20;

QMessageBox::Icon qt_icon(BoxIcon icon) {
  switch (icon) {
    case BoxIcon::information:
      return QMessageBox::Information;
    case BoxIcon::critical:
      return QMessageBox::Critical;
    case BoxIcon::question:
      return QMessageBox::Question;
  }
  return QMessageBox::NoIcon;
}

void bring_to_front(QMessageBox& box) {
  box.raise();
  box.activateWindow();
}

void write_line(const std::string& title, const std::string& text) {
  std::fprintf(stderr, "%s\n", escape_control_bytes(title + ": " + text).c_str());
}

}  // namespace

QtMessageBoxes::~QtMessageBoxes() {
  for (const auto& box : open_) delete box.data();
}

void QtMessageBoxes::show(BoxIcon icon, const std::string& title, const std::string& text) {
  if (icon == BoxIcon::critical) write_line(title, text);
  if (QMessageBox* box = make(icon, title, text)) {
    box->setStandardButtons(QMessageBox::Ok);
    open(*box, nullptr);
  }
}

void QtMessageBoxes::ask(const std::string& title, const std::string& text,
                         std::function<void(bool yes)> on_answer) {
  QMessageBox* box = make(BoxIcon::question, title, text);
  if (box == nullptr) {
    if (on_answer) on_answer(false);
    return;
  }
  box->setStandardButtons(QMessageBox::Yes | QMessageBox::No);
  box->setDefaultButton(QMessageBox::No);
  box->setEscapeButton(QMessageBox::No);
  open(*box, std::move(on_answer));
}

QMessageBox* QtMessageBoxes::make(BoxIcon icon, const std::string& title, const std::string& text) {
  std::erase_if(open_, [](const auto& box) { return box.isNull(); });  // gone with their window
  const QString shown_title = shown(title);
  const QString shown_text = shown_lines(text);
  for (const auto& box : open_) {
    if (box->icon() == qt_icon(icon) && box->windowTitle() == shown_title &&
        box->text() == shown_text) {
      bring_to_front(*box);
      return nullptr;
    }
  }
  if (open_.size() >= kMostOpen) {
    write_line(title, text);
    return nullptr;
  }
  auto* box = new QMessageBox(parent_);
  box->setTextFormat(Qt::PlainText);
  box->setIcon(qt_icon(icon));
  box->setWindowTitle(shown_title);
  box->setText(shown_text);
  box->setAttribute(Qt::WA_DeleteOnClose);
  open_.emplace_back(box);
  return box;
}

void QtMessageBoxes::open(QMessageBox& box, std::function<void(bool yes)> on_answer) {
  QObject::connect(&box, &QMessageBox::finished, &box,
                   [this, &box, on_answer = std::move(on_answer)](int result) {
                     closed(&box);
                     if (on_answer) on_answer(result == QMessageBox::Yes);
                     if (open_count() == 0 && on_last_closed) on_last_closed();
                   });
  box.open();
}

void QtMessageBoxes::closed(const QMessageBox* box) {
  std::erase_if(open_, [box](const auto& other) { return other == box; });
}

void QtMessageBoxes::set_parent_window(QWidget* window) {
  parent_ = window;
  for (const auto& box : open_) {
    if (box.isNull()) continue;
    box->setParent(window, box->windowFlags());  // which hides it
    box->open();
  }
}

std::size_t QtMessageBoxes::open_count() const {
  return static_cast<std::size_t>(
      std::count_if(open_.begin(), open_.end(), [](const auto& box) { return !box.isNull(); }));
}

void QtMessageBoxes::keep_only_critical() {
  const auto kept = std::stable_partition(open_.begin(), open_.end(), [](const auto& box) {
    return !box.isNull() && box->icon() == QMessageBox::Critical;
  });
  std::for_each(kept, open_.end(), [](const auto& box) { delete box.data(); });
  open_.erase(kept, open_.end());
}

}  // namespace velmora::ui
