#include "platform/progress.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(Progress, RateCountsChangesAndFallsWhenNothingComes) {
  RateMeter meter;
  EXPECT_EQ(meter.rate(0), 0);
  for (int second = 0; second <= 40; ++second) {
    const int changes = second / 4;  // a coarse count: one change in four seconds
    meter.add(second, changes * 1000.0);
  }
  EXPECT_DOUBLE_EQ(meter.rate(41), 250);
  EXPECT_LT(meter.rate(400), 50);
  meter.add(401, 10);  // begun anew
  EXPECT_EQ(meter.rate(402), 0);
}

TEST(Progress, ShowsSizesAndTimes) {
  EXPECT_EQ(shown_size(1023), "1023 B");
  EXPECT_EQ(shown_size(1536 * 1024.0), "1.5 MiB");
  EXPECT_EQ(shown_time(33.2), "0:34");
  EXPECT_EQ(shown_time(3723), "1:02:03");
}

}  // namespace
}  // namespace velmora
