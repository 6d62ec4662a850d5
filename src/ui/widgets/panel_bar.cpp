#include "ui/widgets/panel_bar.h"

#include <QPainter>
#include <QStyle>

#include "ui/widgets/text.h"

namespace velmora::ui {

void ElidedLabel::set_text(const QString& text) {
  setText(text);
  setToolTip(plain_tooltip(text));
  setAccessibleDescription(text);  // the name says which panel it is
}

QSize ElidedLabel::minimumSizeHint() const {
  return {fontMetrics().averageCharWidth() * 4, QLabel::minimumSizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QRect inside = contentsRect();
  const QString line = fontMetrics().elidedText(text(), Qt::ElideRight, inside.width());
  style()->drawItemText(&painter, inside, Qt::AlignLeft | Qt::AlignVCenter, palette(), isEnabled(),
                        line, foregroundRole());
}

PanelBar::PanelBar(std::size_t panels, QWidget* parent) : QStatusBar(parent) {
  for (std::size_t number = 1; number <= panels; ++number) {
    auto* panel = new ElidedLabel;
    panel->setTextFormat(Qt::PlainText);
    panel->setAccessibleName(tr("Status %1").arg(number));
    panels_.push_back(panel);
    addPermanentWidget(panel, number == 1 ? 1 : 0);
  }
}

void PanelBar::set_panel(std::size_t number, const QString& text) {
  panels_.at(number - 1)->set_text(text);
}

QLabel* PanelBar::panel(std::size_t number) const { return panels_.at(number - 1); }

}  // namespace velmora::ui
