// The edit fields of one text control, of one line and of many. They show a byte string and give
// back the bytes: unchanged as long as nobody edits them, whatever bytes they are. They know no
// control; FormBinding joins them.
#pragma once

#include <QLineEdit>
#include <QPlainTextEdit>
#include <string>

namespace velmora::ui {

class LineEdit : public QLineEdit {
  Q_OBJECT

 public:
  explicit LineEdit(QWidget* parent = nullptr);
  // Does nothing when the field stands for these bytes already: an edit goes on undisturbed.
  void show_bytes(const std::string& bytes);
  [[nodiscard]] const std::string& bytes() const { return bytes_; }

 signals:
  void edited();  // bytes() has changed under a person's hands

 private:
  std::string bytes_;
  bool showing_ = false;
};

class TextEdit : public QPlainTextEdit {
  Q_OBJECT

 public:
  explicit TextEdit(QWidget* parent = nullptr);
  void show_bytes(const std::string& bytes);
  [[nodiscard]] const std::string& bytes() const { return bytes_; }

 signals:
  void edited();

 private:
  std::string bytes_;
  bool showing_ = false;
  bool bare_line_feeds_ = false;  // how the text as it came ends its lines; else by a pair
};

}  // namespace velmora::ui
