// How fast something goes and how much and how long that is, as people read it. Times are seconds
// on any steady clock, sizes are bytes. It has no clock and knows nothing of what it measures.
#pragma once

#include <deque>
#include <string>

namespace velmora {

// The rate over the last changes. A whole percentage of a large file changes seldom, so only
// changes count; a count that has not changed for long lets the rate fall.
class RateMeter {
 public:
  void add(double now, double bytes);
  [[nodiscard]] double rate(double now) const;  // bytes a second; 0 while nothing is known

 private:
  struct Sample {
    double time;
    double bytes;
  };
  std::deque<Sample> samples_;
};

std::string shown_size(double bytes);    // "1.2 MiB"
std::string shown_time(double seconds);  // "0:34", "1:02:03"

}  // namespace velmora
