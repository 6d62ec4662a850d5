#include "platform/progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace velmora {
namespace {

constexpr std::size_t kSamples = 12;

}  // namespace

void RateMeter::add(double now, double bytes) {
  if (!samples_.empty() && bytes < samples_.back().bytes) samples_.clear();  // begun anew
  if (!samples_.empty() && bytes <= samples_.back().bytes) return;
  samples_.push_back({now, bytes});
  if (samples_.size() > kSamples) samples_.pop_front();
}

double RateMeter::rate(double now) const {
  if (samples_.size() < 2) return 0;
  const double span = samples_.back().time - samples_.front().time;
  const double usual = span / static_cast<double>(samples_.size() - 1);
  // twice the usual pause between two changes, and two seconds more, still count as going on
  const double idle = now - samples_.back().time;
  const double time = idle > 2 * usual + 2 ? span + idle : span;
  return time > 0 ? (samples_.back().bytes - samples_.front().bytes) / time : 0;
}

std::string shown_size(double bytes) {
  static constexpr std::array<std::string_view, 5> kUnits = {"B", "KiB", "MiB", "GiB", "TiB"};
  std::size_t unit = 0;
  while (bytes >= 1024 && unit + 1 < kUnits.size()) {
    bytes /= 1024;
    ++unit;
  }
  return unit == 0 ? fmt::format("{:.0f} B", bytes)
                   : fmt::format("{:.1f} {}", bytes, kUnits.at(unit));
}

std::string shown_time(double seconds) {
  constexpr double kLongest = 99 * 3600.0;
  const auto whole = static_cast<long>(std::clamp(std::ceil(seconds), 0.0, kLongest));
  if (whole < 3600) return fmt::format("{}:{:02}", whole / 60, whole % 60);
  return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

}  // namespace velmora
