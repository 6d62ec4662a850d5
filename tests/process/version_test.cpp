// One version wherever a program shows it.
#include <gtest/gtest.h>

#include "process/program.h"

namespace velmora::process {
namespace {

TEST(Version, IsTheSameWhereverItIsShown) {
  const std::string line = run({"velmorad", "--version"}).output;
  ASSERT_EQ(line.rfind("velmorad ", 0), 0U);
  const std::string version = line.substr(9, line.size() - 10);
  EXPECT_EQ(run({"velmora-cli", "--version"}).output, "velmora-cli " + version + "\n");
#ifdef VELMORA_WITH_WINDOW
  EXPECT_EQ(run({"velmora", "--version"}).output, "velmora " + version + "\n");
#endif
  TemporaryFolder profile;
  Program program({"velmorad", "--profile", profile.path(), "--listen", "127.0.0.15"});
  ASSERT_TRUE(program.wait_for_line("velmorad " + version + " runs on profile"));
  EXPECT_EQ(ask(profile, {"get", "version"}).output, "Version: " + version + "\n");
}

}  // namespace
}  // namespace velmora::process
