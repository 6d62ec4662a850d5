#include "app/traffic_history.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/error.h"

namespace velmora {
namespace {

TEST(TrafficHistory, KeepsTheDifferencesOfTheLastTenMinutes) {
  TrafficHistory history;
  TrafficCounters counters;
  double total = 0;
  for (int second = 1; second <= 1000; ++second) {
    counters.bytes_received = total += second;
    counters.query_hits_in += 2;
    history.add(counters, second, 0);
    const std::size_t kept = static_cast<std::size_t>(std::min(second, 600));
    ASSERT_EQ(history.size(), kept);
    ASSERT_EQ(history.sample(kept - 1).bytes_in, second);
    ASSERT_EQ(history.sample(kept - 1).query_hits, 2);
    ASSERT_EQ(history.sample(0).connections_in, second - static_cast<int>(kept) + 1);
  }
  EXPECT_EQ(history.taken(), 1000U);
  EXPECT_EQ(history.sample(300).bytes_in, 701);
  EXPECT_THROW((void)history.sample(600), PlatformError);
}

}  // namespace
}  // namespace velmora
