#include "ui/widgets/slider_field.h"

#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <algorithm>
#include <cmath>

namespace velmora::ui {
namespace {

constexpr int kStepsPerDoubling = 16;
constexpr int kWideRange = 10000;  // beyond this ratio a pixel of a linear slider says too much

}  // namespace

SliderField::SliderField(std::int32_t minimum, std::int32_t maximum, bool with_number,
                         QWidget* parent)
    : QWidget(parent),
      minimum_(minimum),
      maximum_(maximum),
      logarithmic_(minimum > 0 && maximum / minimum > kWideRange),
      value_(minimum),
      slider_(new QSlider(Qt::Horizontal)) {
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(slider_, 1);
  setFocusProxy(slider_);
  slider_->setRange(step_of(minimum), step_of(maximum));
  slider_->setPageStep(logarithmic_ ? kStepsPerDoubling : std::max(1, (maximum - minimum) / 10));
  connect(slider_, &QSlider::valueChanged, this, [this](int step) { take(value_of(step)); });
  if (!with_number) return;
  number_ = new QSpinBox;
  number_->setRange(minimum, maximum);
  number_->setGroupSeparatorShown(true);
  number_->setStepType(QAbstractSpinBox::AdaptiveDecimalStepType);
  number_->setKeyboardTracking(false);  // half a number is no wish
  row->addWidget(number_);
  connect(number_, &QSpinBox::valueChanged, this, [this](int number) { take(number); });
}

void SliderField::set_value(std::int32_t value) {
  value_ = value;
  show_value();
}

void SliderField::set_name(const QString& name) {
  slider_->setAccessibleName(name);
  if (number_ != nullptr) number_->setAccessibleName(name);
}

int SliderField::step_of(std::int32_t value) const {
  if (!logarithmic_) return value;
  return static_cast<int>(
      std::lround(kStepsPerDoubling * std::log2(static_cast<double>(value) / minimum_)));
}

std::int32_t SliderField::value_of(int step) const {
  if (!logarithmic_) return step;
  const double value = minimum_ * std::exp2(static_cast<double>(step) / kStepsPerDoubling);
  return static_cast<std::int32_t>(std::lround(std::min<double>(value, maximum_)));
}

void SliderField::take(std::int32_t value) {
  if (value == value_) return;
  value_ = value;
  show_value();
  emit moved();
}

void SliderField::show_value() {
  const QSignalBlocker slider_blocker(slider_);
  // At the low end many steps stand for one value; the handle stays where it was put.
  if (value_of(slider_->value()) != value_) slider_->setValue(step_of(value_));
  if (number_ == nullptr) return;
  const QSignalBlocker number_blocker(number_);
  number_->setValue(value_);
}

}  // namespace velmora::ui
