#include "app/traffic_history.h"

#include "platform/error.h"

namespace velmora {

void TrafficHistory::add(const TrafficCounters& counters, int connections_in, int connections_out) {
  const auto added = [&](auto TrafficCounters::*counter) {
    return static_cast<double>(counters.*counter) - static_cast<double>(before_.*counter);
  };
  TrafficSample sample;
  sample.bytes_in = added(&TrafficCounters::bytes_received);
  sample.bytes_out = added(&TrafficCounters::bytes_sent);
  sample.pings = added(&TrafficCounters::pings_in);
  sample.pongs = added(&TrafficCounters::pongs_in);
  sample.queries = added(&TrafficCounters::queries_in);
  sample.query_hits = added(&TrafficCounters::query_hits_in);
  sample.pushes = added(&TrafficCounters::pushes_in);
  sample.unknown = added(&TrafficCounters::unknown);
  sample.connections_in = connections_in;
  sample.connections_out = connections_out;
  if (samples_.size() < kMostSamples) {
    samples_.push_back(sample);
  } else {
    samples_[taken_ % kMostSamples] = sample;
  }
  ++taken_;
  before_ = counters;
}

const TrafficSample& TrafficHistory::sample(std::size_t index) const {
  if (index >= samples_.size()) throw PlatformError(Errc::subscript_out_of_range);
  if (samples_.size() < kMostSamples) return samples_[index];
  return samples_[(taken_ + index) % kMostSamples];
}

TrafficSample TrafficHistory::newest() const {
  return samples_.empty() ? TrafficSample() : sample(samples_.size() - 1);
}

}  // namespace velmora
