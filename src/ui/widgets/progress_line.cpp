#include "ui/widgets/progress_line.h"

#include <algorithm>

namespace velmora::ui {
namespace {

constexpr int kSteps = 1000;  // a count of files may be larger than an int

}  // namespace

ProgressLine::ProgressLine(QWidget* parent) : QProgressBar(parent) { setTextVisible(true); }

void ProgressLine::show_progress(const QString& text, std::size_t done, std::size_t total) {
  text_ = text;
  setRange(0, total == 0 ? 0 : kSteps);
  if (total > 0) {
    const double part = static_cast<double>(done) / static_cast<double>(total);
    setValue(static_cast<int>(kSteps * std::min(part, 1.0)));
  }
  update();
}

}  // namespace velmora::ui
