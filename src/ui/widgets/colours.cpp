#include "ui/widgets/colours.h"

#include <algorithm>
#include <cmath>

#include "form/control.h"

namespace velmora::ui {
namespace {

constexpr double kReadable = 4.5;  // what the web's accessibility guidelines ask of body text

double linear(float channel) {
  return channel <= 0.04045F ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& colour) {
  const QColor rgb = colour.toRgb();
  return 0.2126 * linear(rgb.redF()) + 0.7152 * linear(rgb.greenF()) + 0.0722 * linear(rgb.blueF());
}

}  // namespace

QColor to_colour(std::int32_t value) {
  if (value < 0) return {};  // the system's colours have the highest bit set
  const auto bits = static_cast<std::uint32_t>(value);
  return QColor::fromRgb(static_cast<int>(bits & 255U), static_cast<int>(bits >> 8U & 255U),
                         static_cast<int>(bits >> 16U & 255U));
}

double contrast(const QColor& one, const QColor& other) {
  const double a = luminance(one);
  const double b = luminance(other);
  return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

QColor readable_on(const QColor& back, const QPalette& palette) {
  QColor best = palette.color(QPalette::Active, QPalette::WindowText);
  if (contrast(best, back) >= kReadable) return best;
  for (const QPalette::ColorRole role : {QPalette::Base, QPalette::Window, QPalette::BrightText,
                                         QPalette::Shadow, QPalette::HighlightedText}) {
    const QColor candidate = palette.color(QPalette::Active, role);
    if (contrast(candidate, back) > contrast(best, back)) best = candidate;
  }
  return best;
}

QColor between(const QColor& one, const QColor& other) {
  return QColor::fromRgb((one.red() + other.red()) / 2, (one.green() + other.green()) / 2,
                         (one.blue() + other.blue()) / 2);
}

QColor pale(const QColor& text, const QColor& back) {
  const auto mixed = [](float a, float b) { return 0.7F * a + 0.3F * b; };
  return QColor::fromRgbF(mixed(text.redF(), back.redF()), mixed(text.greenF(), back.greenF()),
                          mixed(text.blueF(), back.blueF()));
}

}  // namespace velmora::ui
