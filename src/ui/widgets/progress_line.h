// A progress bar whose text is the program's own, plain and whole ("%p" in a folder's name is no
// placeholder); busy while the total is not known. It knows no control; FormBinding joins it.
#pragma once

#include <QProgressBar>
#include <cstddef>

namespace velmora::ui {

class ProgressLine : public QProgressBar {
  Q_OBJECT

 public:
  explicit ProgressLine(QWidget* parent = nullptr);
  void show_progress(const QString& text, std::size_t done, std::size_t total);
  [[nodiscard]] QString text() const override { return text_; }

 private:
  QString text_;
};

}  // namespace velmora::ui
