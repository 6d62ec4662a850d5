// The status bar with its panels: the first takes the room, the others what their texts need. A
// text too long for its panel ends in "…" and stands whole in the tool-tip. What the first panel
// says is paler after ten seconds, so that it is not taken for news. It knows no control;
// FormBinding joins it.
#pragma once

#include <QLabel>
#include <QStatusBar>
#include <QTimer>
#include <vector>

namespace velmora::ui {

class ElidedLabel : public QLabel {
  Q_OBJECT

 public:
  using QLabel::QLabel;
  void set_text(const QString& text);
  void set_old(bool old);
  [[nodiscard]] bool old() const { return old_; }
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  bool old_ = false;
};

class PanelBar : public QStatusBar {
  Q_OBJECT

 public:
  explicit PanelBar(std::size_t panels, QWidget* parent = nullptr);
  static constexpr int kFreshMs = 10'000;

  void set_panel(std::size_t number, const QString& text);  // from 1
  void freshen();  // the first panel's text has just been said
  [[nodiscard]] ElidedLabel* panel(std::size_t number) const;

 signals:
  void grown_old();  // the first panel's text

 private:
  QTimer age_{this};
  std::vector<ElidedLabel*> panels_;
};

}  // namespace velmora::ui
