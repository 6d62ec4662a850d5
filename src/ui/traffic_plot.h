// The live plot of the page "Stats": bytes in and out, descriptors received by kind, or
// connections, second by second over the last ten minutes, and the last second in words. It draws a
// history that others fill and keep (not owned, must outlive it), only while it is visible, and
// costs nothing otherwise. It is no control of the form.
#pragma once

#include <QWidget>
#include <cstdint>

#include "app/traffic_history.h"

class QButtonGroup;
class QChart;
class QChartView;
class QLabel;
class QValueAxis;

namespace velmora::ui {

class TrafficPlot : public QWidget {
  Q_OBJECT

 public:
  explicit TrafficPlot(const TrafficHistory& history, QWidget* parent = nullptr);

  // Draws what is new; nothing while there is no newer sample or nobody sees it. Call it as often
  // as is handy.
  void refresh();

 protected:
  void showEvent(QShowEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  QLayout* make_choice();
  void show_view(int number);
  void draw();
  void tell_last_second();
  void paint_with_palette();

  const TrafficHistory& history_;
  QButtonGroup* choice_;
  QLabel* words_;
  QChart* chart_;  // owned by its view
  QChartView* view_;
  QValueAxis* time_axis_;
  QValueAxis* value_axis_;
  int shown_view_ = -1;
  std::uint64_t drawn_ = 0;  // the number of the newest sample that is drawn
};

}  // namespace velmora::ui
