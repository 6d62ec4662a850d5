#include "platform/uv/uv_spare_buffers.h"

#include <gtest/gtest.h>

#include <string>

namespace velmora::uv {
namespace {

// How many buffers with memory come back out of so many given in.
std::size_t kept(std::size_t given, std::size_t size) {
  UvSpareBuffers spares;
  for (std::size_t i = 0; i < given; ++i) spares.give(std::string(size, 'x'));
  std::size_t count = 0;
  while (spares.take().capacity() >= size) ++count;
  return count;
}

TEST(SpareBuffers, KeepSomeMemoryButNotWithoutEnd) {
  EXPECT_EQ(kept(3, 1000), 3U);
  EXPECT_EQ(kept(5000, 100), 1024U);             // in number
  EXPECT_EQ(kept(5000, 100'000), 83U);           // in bytes together: 8 MiB
  EXPECT_EQ(kept(1, std::size_t{1} << 20), 0U);  // one for itself
  UvSpareBuffers spares;
  for (int round = 0; round < 300; ++round) {
    spares.give(std::string(100'000, 'x'));
    const std::string buffer = spares.take();
    EXPECT_TRUE(buffer.empty() && buffer.capacity() >= 100'000) << round;
  }
}

}  // namespace
}  // namespace velmora::uv
