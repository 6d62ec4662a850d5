#include "net/query_routes.h"

#include <gtest/gtest.h>

#include "net/servent_routes.h"

namespace velmora {
namespace {

bool any(const Way&) { return true; }

std::string guid(std::size_t number) {
  std::string text = std::to_string(number);
  text.resize(kGuidSize, '.');
  return text;
}

TEST(QueryRoutes, TheNewest8192AreHeld) {
  QueryRoutes routes;
  const std::size_t most = QueryRoutes::kEntries;
  for (std::size_t i = 1; i <= most; ++i) routes.enter(guid(i), "text", {.connection = i}, 0);
  EXPECT_EQ(routes.way_back(guid(1), "", any)->connection, 1U);
  // One that is entered again is held as the newer one.
  routes.enter(guid(2), "other", {.connection = 7}, 0);
  EXPECT_EQ(routes.way_back(guid(1), "", any), nullptr);
  EXPECT_EQ(routes.way_back(guid(2), "text", any)->connection, 2U);
  routes.enter(guid(0), "", {.connection = 9}, 0);
  EXPECT_EQ(routes.way_back(guid(2), "text", any)->connection, 7U);
  EXPECT_FALSE(routes.repeated(guid(2), "text", 0));
  EXPECT_TRUE(routes.repeated(guid(2), "other", 0));
  for (std::size_t i = 0; i < 3 * most; ++i) routes.enter(guid(i % 5), "t", {.connection = i}, 0);
  EXPECT_EQ(routes.way_back(guid(3), "t", any)->connection, 3 * most - 3);
  EXPECT_EQ(routes.way_back(guid(7), "t", any), nullptr);
  routes.clear();
  EXPECT_EQ(routes.way_back(guid(3), "t", any), nullptr);
}

TEST(QueryRoutes, ARepeatIsTheSameTextWithin50Seconds) {
  QueryRoutes routes;
  routes.enter(guid(1), "abc", {.connection = 1}, 1000);
  EXPECT_TRUE(routes.repeated(guid(1), "abc", 50'999));
  EXPECT_FALSE(routes.repeated(guid(1), "abc", 51'000));
  EXPECT_FALSE(routes.repeated(guid(1), "ABC", 1000));
  EXPECT_FALSE(routes.repeated(guid(2), "abc", 1000));
}

TEST(QueryRoutes, TheUsableWayWhoseWordsFit) {
  QueryRoutes routes;
  routes.enter(guid(1), "a b", {.connection = 1}, 0);
  routes.enter(guid(1), "B  C", {.connection = 2}, 0);
  routes.enter(guid(1), "zebra", {.connection = 3}, 0);
  const struct {
    const char* name;
    std::size_t closed;
    std::size_t way;
  } cases[] = {{"abc", 0, 2}, {"ab", 0, 1}, {"xyz", 0, 3}, {"xyz", 3, 2}, {"abc", 2, 1}};
  for (const auto& c : cases) {
    const Way* way = routes.way_back(guid(1), c.name,
                                     [&](const Way& one) { return one.connection != c.closed; });
    EXPECT_EQ(way->connection, c.way) << c.name << " " << c.closed;
  }
}

TEST(ServentRoutes, TheFirstOf8192MakesRoom) {
  ServentRoutes routes;
  const std::size_t most = ServentRoutes::kEntries;
  for (std::size_t i = 0; i < most; ++i) routes.enter(guid(i), {.connection = i + 1});
  routes.enter(guid(0), {.connection = 77});
  EXPECT_EQ(routes.way_to(guid(0))->connection, 77U);
  routes.enter(guid(most), {.connection = 5});
  EXPECT_EQ(routes.way_to(guid(0)), nullptr);
  EXPECT_EQ(routes.way_to(guid(1))->connection, 2U);
  routes.enter(guid(0), {.connection = 6});
  EXPECT_EQ(routes.way_to(guid(1)), nullptr);
  EXPECT_EQ(routes.way_to(guid(most))->connection, 5U);
}

}  // namespace
}  // namespace velmora
