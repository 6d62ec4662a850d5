// The traffic of the last ten minutes, one sample a second, for whoever draws it. A sample holds
// what was added to the counters since the sample before it, and how many connections stood when it
// was taken. It has no clock and no timer: the list refresh, which owns it, feeds it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "net/traffic_counters.h"

namespace velmora {

struct TrafficSample {
  double bytes_in = 0;
  double bytes_out = 0;
  // Descriptors received, by kind.
  double pings = 0;
  double pongs = 0;
  double queries = 0;
  double query_hits = 0;
  double pushes = 0;
  double unknown = 0;
  int connections_in = 0;
  int connections_out = 0;
};

class TrafficHistory {
 public:
  static constexpr std::size_t kMostSamples = 600;

  void add(const TrafficCounters& counters, int connections_in, int connections_out);

  [[nodiscard]] std::size_t size() const { return samples_.size(); }
  // 0 is the oldest that is kept, size() - 1 the newest; outside: "Subscript out of range".
  [[nodiscard]] const TrafficSample& sample(std::size_t index) const;
  [[nodiscard]] TrafficSample newest() const;  // all zeros before the first
  // Samples ever taken: the newest has this number, so that a plot knows how many are new to it.
  [[nodiscard]] std::uint64_t taken() const { return taken_; }

 private:
  std::vector<TrafficSample> samples_;  // a ring once it is full
  TrafficCounters before_;
  std::uint64_t taken_ = 0;
};

}  // namespace velmora
