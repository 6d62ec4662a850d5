#include "ui/text_window.h"

#include <QDialogButtonBox>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextCursor>
#include <QVBoxLayout>
#include <algorithm>

#include "ui/widgets/form_binding.h"
#include "ui/widgets/form_button.h"
#include "ui/widgets/text.h"

namespace velmora::ui {
namespace {

constexpr int kShowEveryMs = 200;  // a flood of unknown descriptors rewrites 64 KiB each time

}  // namespace

TextWindow::TextWindow(FormBinding& binding, Window& window, std::initializer_list<Button*> buttons,
                       QWidget* parent)
    : FormWindow(binding, window, parent), window_(window), text_(new QPlainTextEdit) {
  text_->setReadOnly(true);
  text_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  text_->setUndoRedoEnabled(false);
  text_->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  text_->setTabChangesFocus(true);
  text_->setAccessibleName(windowTitle());
  auto* row = new QDialogButtonBox;
  FormButton* last = nullptr;
  for (Button* button : buttons) {
    last = binding.button(*button);
    row->addButton(last, QDialogButtonBox::ActionRole);
  }
  if (last != nullptr) last->setDefault(true);
  auto* column = new QVBoxLayout(this);
  column->addWidget(text_, 1);
  column->addWidget(row);
  const QFontMetrics letters = fontMetrics();
  resize(letters.averageCharWidth() * 80, letters.lineSpacing() * 24);

  timer_.setSingleShot(true);
  connect(&timer_, &QTimer::timeout, this, &TextWindow::show_text);
  connect(text_, &QPlainTextEdit::copyAvailable, this, [this](bool marked) {
    if (!marked) show_soon();
  });
  on_show = [this] {
    QTextCursor unmarked = text_->textCursor();
    unmarked.clearSelection();
    text_->setTextCursor(unmarked);
    show_text();
  };
  binding.follow(window, this, [this] { show_soon(); });
}

void TextWindow::show_soon() {
  if (!isVisible() || timer_.isActive()) return;
  const qint64 since = since_shown_.isValid() ? since_shown_.elapsed() : kShowEveryMs;
  timer_.start(static_cast<int>(std::max<qint64>(0, kShowEveryMs - since)));
}

void TextWindow::show_text() {
  since_shown_.start();
  const QString text = shown_lines(window_.text());
  if (text == shown_) return;
  QScrollBar* bar = text_->verticalScrollBar();
  const bool at_end = bar->value() == bar->maximum();
  const int place = bar->value();
  if (!shown_.isEmpty() && text.startsWith(shown_)) {
    QTextCursor end(text_->document());
    end.movePosition(QTextCursor::End);
    end.insertText(text.mid(shown_.size()));
  } else if (text_->textCursor().hasSelection()) {
    return;  // the whole text would come anew; it does when nothing is marked any more
  } else {
    text_->setPlainText(text);
  }
  shown_ = text;
  bar->setValue(at_end ? bar->maximum() : place);
}

}  // namespace velmora::ui
