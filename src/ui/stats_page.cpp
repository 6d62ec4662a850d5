#include "ui/stats_page.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QTimer>

#include "ui/page_layout.h"
#include "ui/traffic_plot.h"
#include "ui/widgets/form_binding.h"
#include "ui/widgets/value_label.h"

namespace velmora::ui {
namespace {

// Wide enough for what a busy day counts, so that the page does not move with every digit.
const QString kWidestCount = QStringLiteral("00,000,000 / 00,000,000");

}  // namespace

StatsPage::StatsPage(Form& form, FormBinding& bind, const TrafficHistory& history, QWidget* parent)
    : QWidget(parent), history_(history), connections_(new QLabel), plot_place_(new QVBoxLayout) {
  auto* halves = new QHBoxLayout(this);
  auto* counters = framed(tr("Traffic"), make_counters(form, bind));
  halves->addWidget(counters, 0, Qt::AlignTop);
  halves->addLayout(plot_place_, 1);
  bind.follow(form.lHosts, this, [this] {
    show_connections();
    if (plot_ != nullptr) plot_->refresh();
  });
}

QLayout* StatsPage::make_counters(Form& form, FormBinding& bind) {
  auto* rows = form_rows();
  connections_->setToolTip(tr("Connections that other hosts opened, and that this one opened."));
  connections_->setMinimumWidth(fontMetrics().horizontalAdvance(kWidestCount));
  auto* caption = new QLabel(tr("Connections In/Out"));
  caption->setToolTip(connections_->toolTip());
  rows->addRow(caption, connections_);
  for (Label* counter :
       {&form.net_stat, &form.bytein_stat, &form.byteout_stat, &form.drop_stat, &form.route_stat,
        &form.ping_stat, &form.myping_stat, &form.pong_stat, &form.mypong_stat, &form.search_stat,
        &form.reply_stat, &form.push_stat, &form.unknown_stat}) {
    QWidget* count = bind.label(*counter);
    add_field(rows, bind, *counter, count);
  }
  return rows;
}

void StatsPage::paintEvent(QPaintEvent* event) {
  QWidget::paintEvent(event);
  if (painted_) return;
  painted_ = true;
  QTimer::singleShot(0, this, [this] { make_plot(); });
}

void StatsPage::make_plot() {
  plot_ = new TrafficPlot(history_);
  plot_place_->addWidget(plot_, 1);
}

void StatsPage::show_connections() {
  const TrafficSample now = history_.newest();
  connections_->setText(QStringLiteral("%1 / %2").arg(now.connections_in).arg(now.connections_out));
}

}  // namespace velmora::ui
