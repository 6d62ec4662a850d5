// The program's message boxes on the screen: opened and never waited for, plain text only, gone
// when they are closed. A box that is open already is brought to the front instead of shown twice,
// and there are never more than 20. Critical texts go to standard error as well: they may come when
// the program is about to end. It owns the boxes; when it goes they go, unanswered.
#pragma once

#include <QPointer>
#include <functional>
#include <vector>

#include "platform/message_boxes.h"

class QMessageBox;
class QWidget;

namespace velmora::ui {

class QtMessageBoxes : public MessageBoxes {
 public:
  QtMessageBoxes() = default;
  ~QtMessageBoxes() override;
  QtMessageBoxes(const QtMessageBoxes&) = delete;
  QtMessageBoxes& operator=(const QtMessageBoxes&) = delete;

  void show(BoxIcon icon, const std::string& title, const std::string& text) override;
  // Closing the box is a No, and so is a question that cannot be shown or is on the screen already.
  void ask(const std::string& title, const std::string& text,
           std::function<void(bool yes)> on_answer) override;

  // The window that the boxes belong to, those that are open and those to come.
  void set_parent_window(QWidget* window);

  [[nodiscard]] std::size_t open_count() const;
  void keep_only_critical();  // the others go, unanswered
  std::function<void()> on_last_closed;

 private:
  // Null when it is open already or there are too many.
  QMessageBox* make(BoxIcon icon, const std::string& title, const std::string& text);
  void open(QMessageBox& box, std::function<void(bool yes)> on_answer);
  void closed(const QMessageBox* box);

  QPointer<QWidget> parent_;
  std::vector<QPointer<QMessageBox>> open_;
};

}  // namespace velmora::ui
