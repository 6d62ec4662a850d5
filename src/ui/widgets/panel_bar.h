// The status bar with its panels: the first takes the room, the others what their texts need. A
// text too long for its panel ends in "…" and stands whole in the tool-tip. It knows no control;
// FormBinding joins it.
#pragma once

#include <QLabel>
#include <QStatusBar>
#include <vector>

namespace velmora::ui {

class ElidedLabel : public QLabel {
  Q_OBJECT

 public:
  using QLabel::QLabel;
  void set_text(const QString& text);
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

class PanelBar : public QStatusBar {
  Q_OBJECT

 public:
  explicit PanelBar(std::size_t panels, QWidget* parent = nullptr);
  void set_panel(std::size_t number, const QString& text);  // from 1
  [[nodiscard]] QLabel* panel(std::size_t number) const;

 private:
  std::vector<ElidedLabel*> panels_;
};

}  // namespace velmora::ui
