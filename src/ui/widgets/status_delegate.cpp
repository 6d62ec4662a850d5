#include "ui/widgets/status_delegate.h"

#include <QPainter>
#include <QStyle>
#include <QWidget>
#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "platform/progress.h"
#include "ui/widgets/list_model.h"
#include "ui/widgets/row_rates.h"

namespace velmora::ui {
namespace {

// The program ends a status with a percentage of its own; the bar has its own, beside the rest.
QString without_percentage(const QString& status) {
  if (!status.endsWith('%')) return status;
  qsizetype end = status.size() - 1;
  while (end > 0 && (status[end - 1].isDigit() || status[end - 1] == ' ')) --end;
  return status.left(end);
}

double done_part(const RowProgress& progress) {
  return progress.total > 0 ? std::clamp(progress.done / progress.total, 0.0, 1.0) : 0;
}

QString longest_that_fits(const QStringList& texts, const QFontMetrics& font, int width) {
  for (const QString& text : texts) {
    if (font.horizontalAdvance(text) <= width) return text;
  }
  return font.elidedText(texts.last(), Qt::ElideRight, width);
}

// The text is painted once in the colours of the bar and once in those of the rest, so that it is
// readable on both sides of the bar's end.
void paint_bar(QPainter& painter, const QRect& area, const QPalette& palette,
               QPalette::ColorGroup group, double part, const QString& text) {
  QRect bar = area;
  bar.setWidth(static_cast<int>(std::lround(part * area.width())));
  QRect rest = area;
  rest.setLeft(bar.left() + bar.width());
  const QRect text_area = area.adjusted(4, 0, -4, 0);
  const auto side = [&](const QRect& clip, QPalette::ColorRole back, QPalette::ColorRole fore) {
    if (clip.isEmpty()) return;
    painter.save();
    painter.setClipRect(clip);
    painter.fillRect(clip, palette.brush(group, back));
    painter.setPen(palette.color(group, fore));
    painter.drawText(text_area, Qt::AlignCenter | Qt::TextSingleLine, text);
    painter.restore();
  };
  side(rest, QPalette::Base, QPalette::Text);
  side(bar, QPalette::Highlight, QPalette::HighlightedText);
  painter.setPen(palette.color(group, QPalette::Mid));
  painter.drawRect(area.adjusted(0, 0, -1, -1));
}

}  // namespace

StatusDelegate::StatusDelegate(const ListModel& model, const RowRates& rates, QObject* parent)
    : QStyledItemDelegate(parent), model_(model), rates_(rates) {}

QStringList StatusDelegate::texts(const QString& status, const RowProgress& progress, double rate) {
  const QString name = without_percentage(status);
  if (progress.total <= 0) return {name};
  const int percent = static_cast<int>(std::floor(100 * done_part(progress)));
  const QString how_far = tr("%1 %").arg(percent);
  const QString named = name.isEmpty() ? how_far : name + ' ' + how_far;
  QStringList texts;
  if (rate > 0) {
    const double left_s = std::max(progress.total - progress.done, 0.0) / rate;
    const QString speed = tr("%1/s").arg(QString::fromStdString(shown_size(rate)));
    const QString left = tr("%1 left").arg(QString::fromStdString(shown_time(left_s)));
    texts << named + "  " + speed + "  " + left << named + "  " + speed << how_far + "  " + speed;
  }
  texts << named << how_far;
  return texts;
}

void StatusDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                           const QModelIndex& index) const {
  const ListView& list = model_.list();
  const std::size_t row = model_.list_row(index);
  const std::optional<RowProgress> progress =
      row >= 1 && row <= list.rows() ? list.progress(row) : std::nullopt;
  if (!progress || !progress->running) {
    QStyledItemDelegate::paint(painter, option, index);
    return;
  }
  QStyleOptionViewItem cell = option;
  initStyleOption(&cell, index);
  const QStringList said = texts(cell.text, *progress, rates_.rate(list.row_key(row)));
  cell.text.clear();
  const QStyle* style = option.widget != nullptr ? option.widget->style() : nullptr;
  if (style != nullptr) style->drawControl(QStyle::CE_ItemViewItem, &cell, painter, option.widget);

  const QRect area = option.rect.adjusted(2, 2, -2, -2);
  const auto group = (option.state & QStyle::State_Enabled) == 0  ? QPalette::Disabled
                     : (option.state & QStyle::State_Active) == 0 ? QPalette::Inactive
                                                                  : QPalette::Active;
  painter->save();
  painter->setFont(cell.font);
  const QString text = longest_that_fits(said, cell.fontMetrics, area.width() - 8);
  paint_bar(*painter, area, option.palette, group, done_part(*progress), text);
  painter->restore();
}

}  // namespace velmora::ui
