// A slider and, beside it, a field for exact numbers. Where the range is as wide as from 1 byte to
// a mebibyte the slider is logarithmic, sixteen steps to a doubling, so that small values can be
// reached as well. It knows no control; FormBinding joins it.
#pragma once

#include <QWidget>
#include <cstdint>

class QSlider;
class QSpinBox;

namespace velmora::ui {

class SliderField : public QWidget {
  Q_OBJECT

 public:
  SliderField(std::int32_t minimum, std::int32_t maximum, bool with_number,
              QWidget* parent = nullptr);
  [[nodiscard]] std::int32_t value() const { return value_; }
  void set_value(std::int32_t value);  // emits nothing
  void set_name(const QString& name);  // what a screen reader calls both

  [[nodiscard]] QSlider* slider() const { return slider_; }
  [[nodiscard]] QSpinBox* number() const { return number_; }  // null without one

 signals:
  void moved();  // value() has changed under a person's hands

 private:
  [[nodiscard]] int step_of(std::int32_t value) const;
  [[nodiscard]] std::int32_t value_of(int step) const;
  void take(std::int32_t value);
  void show_value();

  std::int32_t minimum_;
  std::int32_t maximum_;
  bool logarithmic_;
  std::int32_t value_;
  QSlider* slider_;
  QSpinBox* number_ = nullptr;
};

}  // namespace velmora::ui
