#include "ui/widgets/panel_bar.h"

#include <QPainter>
#include <QStyle>

#include "ui/widgets/colours.h"
#include "ui/widgets/text.h"

namespace velmora::ui {

void ElidedLabel::set_text(const QString& text) {
  setText(text);
  setToolTip(plain_tooltip(text));
  setAccessibleDescription(text);  // the name says which panel it is
}

void ElidedLabel::set_old(bool old) {
  old_ = old;
  update();
}

QSize ElidedLabel::minimumSizeHint() const {
  return {fontMetrics().averageCharWidth() * 4, QLabel::minimumSizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QRect inside = contentsRect();
  const QString line = fontMetrics().elidedText(text(), Qt::ElideRight, inside.width());
  QPalette colours = palette();
  if (old_) {
    const QColor text = colours.color(foregroundRole());
    colours.setColor(foregroundRole(), pale(text, colours.color(backgroundRole())));
  }
  style()->drawItemText(&painter, inside, Qt::AlignLeft | Qt::AlignVCenter, colours, isEnabled(),
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
  age_.setSingleShot(true);
  age_.setInterval(kFreshMs);
  connect(&age_, &QTimer::timeout, this, [this] {
    panels_.front()->set_old(true);
    emit grown_old();
  });
}

void PanelBar::set_panel(std::size_t number, const QString& text) {
  panels_.at(number - 1)->set_text(text);
}

void PanelBar::freshen() {
  panels_.front()->set_old(false);
  age_.start();
}

ElidedLabel* PanelBar::panel(std::size_t number) const { return panels_.at(number - 1); }

}  // namespace velmora::ui
