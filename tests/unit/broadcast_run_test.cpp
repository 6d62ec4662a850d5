#include "net/broadcast_run.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "platform/error.h"

namespace velmora {
namespace {

// Neighbours with room for so many bytes each, and every line that was logged.
struct Neighbours : CopyTaker, DebugLog {
  void debug_log(std::string_view text) override { log.emplace_back(text); }
  [[nodiscard]] std::span<const std::size_t> connected_ones() const override { return connected; }
  void take_copies(std::size_t connection, std::string_view bytes,
                   std::span<const std::uint32_t> ends) override {
    ++calls;
    EXPECT_EQ(ends.back(), bytes.size());
    if (bytes.size() > room[connection]) throw PlatformError(Errc::no_buffer_space);
    room[connection] -= bytes.size();
    received[connection] += bytes;
    copies[connection] += ends.size();
  }

  std::vector<std::size_t> connected;
  std::map<std::size_t, std::size_t> room;
  std::map<std::size_t, std::string> received;
  std::map<std::size_t, std::size_t> copies;
  std::vector<std::string> log;
  int calls = 0;
};

std::string descriptor(std::size_t payload, char fill) {
  return std::string(16, fill) + std::string(7, '\0') + std::string(payload, fill);
}

std::string changed(std::string descriptor, std::uint8_t ttl, std::uint8_t hops) {
  descriptor[17] = static_cast<char>(ttl);
  descriptor[18] = static_cast<char>(hops);
  return descriptor;
}

TEST(BroadcastRun, WritesOnceToEachButTheSource) {
  Neighbours neighbours;
  neighbours.connected = {1, 2, 4};
  for (const std::size_t one : neighbours.connected) neighbours.room[one] = 1000;
  BroadcastRun run(neighbours, neighbours);
  float pings = 0;
  run.add(2, descriptor(0, 'a'), 4, 1, &pings);
  run.add(2, descriptor(5, 'b'), 3, 2, nullptr);
  run.add(2, descriptor(0, 'c'), 2, 255, &pings);
  EXPECT_EQ(neighbours.calls, 0);
  EXPECT_TRUE(run.waits_for(1));
  EXPECT_FALSE(run.waits_for(2));
  run.write();
  EXPECT_FALSE(run.waits_for(1));
  EXPECT_EQ(neighbours.calls, 2);
  EXPECT_EQ(pings, 4);
  const std::string all = changed(descriptor(0, 'a'), 4, 1) + changed(descriptor(5, 'b'), 3, 2) +
                          changed(descriptor(0, 'c'), 2, 255);
  EXPECT_EQ(neighbours.received, (std::map<std::size_t, std::string>{{1, all}, {4, all}}));
  run.write();
  EXPECT_EQ(neighbours.calls, 2);
}

// However it is gathered: everybody gets, and everything counts, what writing each copy on its own
// would give.
TEST(BroadcastRun, IsTheSameAsWritingEveryCopy) {
  for (unsigned seed = 0; seed < 200; ++seed) {
    std::mt19937 random(seed);
    Neighbours gathered;
    for (std::size_t i = 1; i <= 6; ++i) {
      if (random() % 4 != 0) gathered.connected.push_back(i);
      gathered.room[i] = random() % 3 == 0 ? random() % 60'000 : 1'000'000;
    }
    Neighbours single = gathered;
    BroadcastRun run(gathered, gathered);
    float pings = 0;
    float expected_pings = 0;
    std::size_t source = 1;
    for (int i = 0; i < 1000; ++i) {
      if (random() % 200 == 0) source = 1 + random() % 6;
      if (random() % 300 == 0) run.write();
      const bool ping = random() % 5 == 0;
      const std::size_t payload = ping ? 0 : random() % 100;
      const auto made = descriptor(payload, static_cast<char>(random()));
      const auto ttl = static_cast<std::uint8_t>(random());
      run.add(source, made, ttl, 9, ping ? &pings : nullptr);
      const auto copy = changed(made, ttl, 9);
      const auto end = static_cast<std::uint32_t>(copy.size());
      for (const std::size_t other : single.connected) {
        if (other == source) continue;
        if (end > single.room[other]) {
          single.log.emplace_back("foward_data: No buffer space available");
          continue;
        }
        single.take_copies(other, copy, std::span(&end, 1));
        if (ping) expected_pings += 1;
      }
    }
    run.write();
    ASSERT_EQ(gathered.received, single.received) << seed;
    ASSERT_EQ(gathered.copies, single.copies) << seed;
    ASSERT_EQ(gathered.log, single.log) << seed;
    ASSERT_EQ(pings, expected_pings) << seed;
  }
}

}  // namespace
}  // namespace velmora
