// The page "Stats": every traffic counter, how many connections stand, and the plot of the last ten
// minutes. The plot is made after the page has been painted for the first time: the window need not
// wait for it. The history is not owned and outlives the page.
#pragma once

#include <QWidget>

#include "app/traffic_history.h"
#include "form/form.h"

class QBoxLayout;
class QLabel;
class QLayout;

namespace velmora::ui {

class FormBinding;
class TrafficPlot;

class StatsPage final : public QWidget {
  Q_OBJECT

 public:
  StatsPage(Form& form, FormBinding& bind, const TrafficHistory& history,
            QWidget* parent = nullptr);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QLayout* make_counters(Form& form, FormBinding& bind);
  void make_plot();
  void show_connections();

  const TrafficHistory& history_;
  QLabel* connections_;
  QBoxLayout* plot_place_;
  TrafficPlot* plot_ = nullptr;
  bool painted_ = false;
};

}  // namespace velmora::ui
