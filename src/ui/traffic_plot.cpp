#include "ui/traffic_plot.h"

#include <QButtonGroup>
#include <QChart>
#include <QChartView>
#include <QEvent>
#include <QGraphicsLayout>
#include <QLabel>
#include <QLegend>
#include <QLineSeries>
#include <QLocale>
#include <QRadioButton>
#include <QVBoxLayout>
#include <QValueAxis>
#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "platform/progress.h"

namespace velmora::ui {
namespace {

constexpr double kKiB = 1024;
constexpr double kMinutes = static_cast<double>(TrafficHistory::kMostSamples) / 60;
constexpr std::size_t kMostLines = 6;

// Told apart by most colour-blind eyes, on paper and on a dark desktop.
constexpr std::array<QRgb, kMostLines> kOnLight{0xff0072b2, 0xffd55e00, 0xff00795a,
                                                0xffa63a79, 0xff8a6d00, 0xff666666};
constexpr std::array<QRgb, kMostLines> kOnDark{0xff56b4e9, 0xffff9248, 0xff3dd6a3,
                                               0xfff08cc0, 0xfff0e442, 0xffbbbbbb};

struct Line {
  const char* name;
  double (*value)(const TrafficSample&);
};

struct View {
  const char* title;
  const char* unit;
  double least_top;  // the value axis reaches at least this far
  std::vector<Line> lines;
};

const std::vector<View>& views() {
  using S = TrafficSample;
  static const std::vector<View> table = {
      {QT_TRANSLATE_NOOP("velmora::ui::TrafficPlot", "Bytes"),
       "",
       kKiB,
       {{QT_TRANSLATE_NOOP("velmora::ui::TrafficPlot", "Bytes in"),
         [](const S& s) { return s.bytes_in; }},
        {QT_TRANSLATE_NOOP("velmora::ui::TrafficPlot", "Bytes out"),
         [](const S& s) { return s.bytes_out; }}}},
      {QT_TRANSLATE_NOOP("velmora::ui::TrafficPlot", "Descriptors"),
       QT_TRANSLATE_NOOP("velmora::ui::TrafficPlot", "received per second"),
       5,
       {{QT_TRANSLATE_NOOP("velmora::ui::TrafficPlot", "Pings"),
         [](const S& s) { return s.pings; }},
        {QT_TRANSLATE_NOOP("velmora::ui::TrafficPlot", "Pongs"),
         [](const S& s) { return s.pongs; }},
        {QT_TRANSLATE_NOOP("velmora::ui::TrafficPlot", "Queries"),
         [](const S& s) { return s.queries; }},
        {QT_TRANSLATE_NOOP("velmora::ui::TrafficPlot", "Query hits"),
         [](const S& s) { return s.query_hits; }},
        {QT_TRANSLATE_NOOP("velmora::ui::TrafficPlot", "Pushes"),
         [](const S& s) { return s.pushes; }},
        {QT_TRANSLATE_NOOP("velmora::ui::TrafficPlot", "Unknown"),
         [](const S& s) { return s.unknown; }}}},
      {QT_TRANSLATE_NOOP("velmora::ui::TrafficPlot", "Connections"),
       QT_TRANSLATE_NOOP("velmora::ui::TrafficPlot", "connections"),
       5,
       {{QT_TRANSLATE_NOOP("velmora::ui::TrafficPlot", "Incoming"),
         [](const S& s) { return static_cast<double>(s.connections_in); }},
        {QT_TRANSLATE_NOOP("velmora::ui::TrafficPlot", "Outgoing"),
         [](const S& s) { return static_cast<double>(s.connections_out); }}}},
  };
  return table;
}

// The smallest of 1, 2, 5, 10, 20, ... (and their tenths) of which at most five reach `top`.
double round_step(double top) {
  const double power = std::pow(10, std::floor(std::log10(top / 5)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * power * 5 >= top) return factor * power;
  }
  return 10 * power;
}

void set_scale(QValueAxis& axis, double top) {
  const double step = round_step(top);
  const double steps = std::ceil(top / step - 1e-9);
  axis.setRange(0, steps * step);
  axis.setTickCount(static_cast<int>(steps) + 1);
  axis.setLabelFormat(step < 1 ? "%.1f" : "%.0f");
}

}  // namespace

TrafficPlot::TrafficPlot(const TrafficHistory& history, QWidget* parent)
    : QWidget(parent),
      history_(history),
      choice_(new QButtonGroup(this)),
      words_(new QLabel(this)),
      chart_(new QChart),
      view_(new QChartView(chart_, this)),
      time_axis_(new QValueAxis(chart_)),
      value_axis_(new QValueAxis(chart_)) {
  setAccessibleName(tr("Traffic of the last ten minutes"));
  words_->setTextFormat(Qt::PlainText);
  words_->setWordWrap(true);

  time_axis_->setRange(0, kMinutes);
  time_axis_->setReverse(true);
  time_axis_->setTickCount(static_cast<int>(kMinutes) / 2 + 1);
  time_axis_->setLabelFormat("%.0f");
  time_axis_->setTitleText(tr("minutes ago"));
  chart_->addAxis(time_axis_, Qt::AlignBottom);
  chart_->addAxis(value_axis_, Qt::AlignLeft);
  chart_->setMargins(QMargins(4, 0, 8, 0));
  chart_->layout()->setContentsMargins(0, 0, 0, 0);
  chart_->setBackgroundRoundness(0);
  chart_->legend()->setAlignment(Qt::AlignTop);
  chart_->legend()->setMarkerShape(QLegend::MarkerShapeRectangle);

  // What it shows is in the words beside it, so the keyboard need not stop here.
  view_->setFocusPolicy(Qt::NoFocus);
  view_->setAccessibleName(accessibleName());
  view_->setRenderHint(QPainter::Antialiasing);
  view_->setFrameShape(QFrame::NoFrame);
  // It takes the room that there is, and never asks a page to scroll for more than this.
  view_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
  view_->setMinimumSize(fontMetrics().height() * 16, fontMetrics().height() * 10);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addLayout(make_choice());
  layout->addWidget(view_, 1);
  layout->addWidget(words_);
  show_view(0);
  tell_last_second();
}

QLayout* TrafficPlot::make_choice() {
  auto* row = new QHBoxLayout;
  for (int number = 0; number < static_cast<int>(views().size()); ++number) {
    auto* button = new QRadioButton(tr(views()[static_cast<std::size_t>(number)].title), this);
    choice_->addButton(button, number);
    row->addWidget(button);
  }
  row->addStretch();
  choice_->button(0)->setChecked(true);
  connect(choice_, &QButtonGroup::idToggled, this, [this](int number, bool checked) {
    if (checked) show_view(number);
  });
  return row;
}

void TrafficPlot::show_view(int number) {
  if (number == shown_view_) return;
  shown_view_ = number;
  chart_->removeAllSeries();
  for (const Line& line : views()[static_cast<std::size_t>(number)].lines) {
    auto* series = new QLineSeries;
    series->setName(tr(line.name));
    chart_->addSeries(series);
    series->attachAxis(time_axis_);
    series->attachAxis(value_axis_);
  }
  paint_with_palette();
  draw();
}

void TrafficPlot::refresh() {
  if (!isVisible() || drawn_ == history_.taken()) return;
  draw();
  tell_last_second();
}

void TrafficPlot::draw() {
  drawn_ = history_.taken();
  const View& view = views()[static_cast<std::size_t>(shown_view_)];
  double top = view.least_top;
  const std::size_t size = history_.size();
  for (std::size_t i = 0; i < size; ++i) {
    for (const Line& line : view.lines) top = std::max(top, line.value(history_.sample(i)));
  }
  const bool bytes = *view.unit == '\0';
  const double mebi = kKiB * kKiB;
  const double unit = bytes ? (top >= 2 * mebi ? mebi : kKiB) : 1;
  value_axis_->setTitleText(!bytes ? tr(view.unit) : unit > kKiB ? tr("MiB/s") : tr("KiB/s"));
  set_scale(*value_axis_, top / unit);

  QList<QPointF> points(static_cast<qsizetype>(size));
  for (std::size_t number = 0; number < view.lines.size(); ++number) {
    for (std::size_t i = 0; i < size; ++i) {
      points[static_cast<qsizetype>(i)] = {static_cast<double>(size - 1 - i) / 60,
                                           view.lines[number].value(history_.sample(i)) / unit};
    }
    static_cast<QLineSeries*>(chart_->series().at(static_cast<qsizetype>(number)))->replace(points);
  }
}

void TrafficPlot::tell_last_second() {
  QString text = tr("Nothing measured yet.");
  if (history_.size() > 0) {
    const TrafficSample& last = history_.newest();
    const auto size = [](double bytes) { return QString::fromStdString(shown_size(bytes)); };
    const auto count = [this](double number) { return locale().toString(number, 'f', 0); };
    text = tr("Last second: %1/s in, %2/s out. Connections: %3 in, %4 out.")
               .arg(size(last.bytes_in), size(last.bytes_out), count(last.connections_in),
                    count(last.connections_out)) +
           '\n' +
           tr("Received: %1 pings, %2 pongs, %3 queries, %4 query hits, %5 pushes, %6 unknown.")
               .arg(count(last.pings), count(last.pongs), count(last.queries),
                    count(last.query_hits), count(last.pushes), count(last.unknown));
  }
  words_->setText(text);
  setAccessibleDescription(text);
  view_->setAccessibleDescription(text);
}

void TrafficPlot::paint_with_palette() {
  const QColor back = palette().color(QPalette::Base);
  const QColor text = palette().color(QPalette::Text);
  QColor grid = text;
  grid.setAlphaF(0.2F);
  chart_->setBackgroundBrush(back);
  chart_->legend()->setLabelColor(text);
  chart_->legend()->setFont(font());
  for (QValueAxis* axis : {time_axis_, value_axis_}) {
    axis->setLabelsColor(text);
    axis->setTitleBrush(text);
    axis->setLinePenColor(text);
    axis->setGridLineColor(grid);
    axis->setLabelsFont(font());
    axis->setTitleFont(font());
  }
  const auto& colours = back.lightness() < 128 ? kOnDark : kOnLight;
  std::size_t number = 0;
  for (QAbstractSeries* series : chart_->series()) {
    static_cast<QLineSeries*>(series)->setPen(QPen(QColor(colours.at(number++)), 1.5));
  }
}

void TrafficPlot::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  refresh();
}

void TrafficPlot::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  switch (event->type()) {
    case QEvent::PaletteChange:
    case QEvent::FontChange:
      paint_with_palette();
      break;
    default:
      break;
  }
}

}  // namespace velmora::ui
