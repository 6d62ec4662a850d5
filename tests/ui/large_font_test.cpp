// Every page with the larger fonts that people choose: no label and no button is cut off.
#include <gtest/gtest.h>

#include <QLabel>
#include <QPushButton>

#include "window_rig.h"

namespace velmora::ui {
namespace {

// Of a label, the height that its text takes when it wraps.
bool is_cut(const QWidget& widget) {
  const auto* label = qobject_cast<const QLabel*>(&widget);
  if (label != nullptr && label->wordWrap()) {
    return widget.height() < label->heightForWidth(widget.width());
  }
  QSize wanted = widget.minimumSizeHint();
  // A style may want a push button wider than its text needs.
  if (const auto* button = qobject_cast<const QPushButton*>(&widget)) {
    wanted.setWidth(button->fontMetrics().size(Qt::TextShowMnemonic, button->text()).width() + 4);
  }
  return widget.width() < wanted.width() || widget.height() < wanted.height();
}

class LargeFont : public testing::TestWithParam<double> {
 protected:
  LargeFont() {
    QFont larger = usual_;
    larger.setPointSizeF(usual_.pointSizeF() * GetParam());
    QApplication::setFont(larger);
  }
  ~LargeFont() override { QApplication::setFont(usual_); }

  QFont usual_ = QApplication::font();
};

TEST_P(LargeFont, CutsNoTextOff) {
  WindowRig rig;
  rig.window().resize(rig.window().minimumSize() * GetParam());
  int looked_at = 0;
  for (int page = 0; page < 7; ++page) {
    rig.go_to(static_cast<Page>(page));
    rig.settle();
    for (const QWidget* widget : rig.window().findChildren<QWidget*>()) {
      const auto* label = qobject_cast<const QLabel*>(widget);
      const auto* button = qobject_cast<const QAbstractButton*>(widget);
      if (!widget->isVisible() || (label == nullptr && button == nullptr)) continue;
      ++looked_at;
      EXPECT_FALSE(is_cut(*widget))
          << "page " << page << ": "
          << (label != nullptr ? label->text() : button->text()).toStdString();
    }
  }
  EXPECT_GT(looked_at, 100);
}

INSTANTIATE_TEST_SUITE_P(Factors, LargeFont, testing::Values(1.0, 1.5, 2.0));

}  // namespace
}  // namespace velmora::ui
