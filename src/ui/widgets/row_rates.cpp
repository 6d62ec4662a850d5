#include "ui/widgets/row_rates.h"

#include <utility>

namespace velmora::ui {
namespace {

constexpr std::size_t kMostTransfers = 1000;
constexpr double kPause_s = 0.5;  // changes closer together would make the rate jump

}  // namespace

void RowRates::feed(const ListView& list) {
  const double now = clock_();
  if (fed_ && now - *fed_ < kPause_s) return;
  fed_ = now;
  std::unordered_map<std::string, RateMeter> running;
  for (std::size_t row = 1; row <= list.rows() && running.size() < kMostTransfers; ++row) {
    const std::optional<RowProgress> progress = list.progress(row);
    if (!progress || !progress->running) continue;
    std::string key = list.row_key(row);
    auto known = meters_.extract(key);
    RateMeter meter = known.empty() ? RateMeter() : std::move(known.mapped());
    meter.add(now, progress->done);
    running.insert_or_assign(std::move(key), std::move(meter));
  }
  meters_ = std::move(running);
}

double RowRates::rate(const std::string& row_key) const {
  const auto found = meters_.find(row_key);
  return found == meters_.end() ? 0 : found->second.rate(clock_());
}

}  // namespace velmora::ui
