#include "ui/widgets/line_edit.h"

#include <QScopedValueRollback>
#include <QTextCursor>
#include <algorithm>

#include "ui/widgets/text.h"

namespace velmora::ui {
namespace {

constexpr int kLongestLine = 1 << 20;

}  // namespace

LineEdit::LineEdit(QWidget* parent) : QLineEdit(parent) {
  setMaxLength(kLongestLine);
  connect(this, &QLineEdit::textChanged, this, [this](const QString& text) {
    if (showing_) return;
    bytes_ = edited_bytes(text, bytes_);
    emit edited();
  });
}

void LineEdit::show_bytes(const std::string& bytes) {
  if (bytes == bytes_) return;
  const QScopedValueRollback<bool> showing(showing_, true);
  const int cursor = cursorPosition();
  bytes_ = bytes;
  setText(editable(bytes));
  if (hasFocus()) setCursorPosition(cursor);
}

TextEdit::TextEdit(QWidget* parent) : QPlainTextEdit(parent) {
  setTabChangesFocus(true);
  connect(this, &QPlainTextEdit::textChanged, this, [this] {
    if (showing_) return;
    QString text = toPlainText();
    if (!bare_line_feeds_) text.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    bytes_ = edited_bytes(text, bytes_);
    emit edited();
  });
}

void TextEdit::show_bytes(const std::string& bytes) {
  if (bytes == bytes_) return;
  const QScopedValueRollback<bool> showing(showing_, true);
  const int position = textCursor().position();
  bytes_ = bytes;
  bare_line_feeds_ =
      bytes.find('\n') != std::string::npos && bytes.find("\r\n") == std::string::npos;
  setPlainText(editable(bytes).replace(QLatin1String("\r\n"), QLatin1String("\n")));
  QTextCursor cursor = textCursor();
  cursor.setPosition(std::min(position, document()->characterCount() - 1));
  setTextCursor(cursor);
}

}  // namespace velmora::ui
