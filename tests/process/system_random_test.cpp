#include "platform/uv/system_random.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace velmora::uv {
namespace {

TEST(SystemRandom, FillsEveryByteAnewEachTime) {
  SystemRandom random;
  std::set<std::string> drawn;
  for (int i = 0; i < 1000; ++i) {
    std::string bytes(16, '\0');
    random.fill(bytes);
    drawn.insert(bytes);
  }
  EXPECT_EQ(drawn.size(), 1000U);

  std::string many(100'000, '\0');  // more than one call gives
  random.fill(many);
  std::set<char> at_the_end(many.end() - 10'000, many.end());
  EXPECT_EQ(at_the_end.size(), 256U);
  random.fill({});
}

}  // namespace
}  // namespace velmora::uv
