// A seed must replay: the same run, line by line.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "simulator/scenario.h"

namespace velmora::simulator {
namespace {

TEST(Simulator, ASeedReplays) {
  std::vector<std::string> lines[2];
  for (std::vector<std::string>& told : lines) {
    ScenarioOptions options;
    options.seed = 7;
    options.tell = [&told](const std::string& line) { told.push_back(line); };
    EXPECT_EQ(run_scenario(options).fault, "");
  }
  EXPECT_GT(lines[0].size(), 50U);
  EXPECT_EQ(lines[0], lines[1]);
}

}  // namespace
}  // namespace velmora::simulator
