// Rows of equal files against the plainest way to find them, and what colliding hashes cost.
#include "transfer/result_rows.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace velmora {
namespace {

TEST(ResultRows, AreThoseThatAMapWouldFind) {
  std::mt19937 chance(7);
  const auto below = [&](unsigned most) { return chance() % most; };
  OneBased<search_result> results;
  ResultRows rows(results);
  for (int round = 0; round < 3; ++round) {
    std::map<std::tuple<std::string, std::string, std::string>, std::size_t> row_of;
    std::vector<std::vector<std::size_t>> expected;
    std::set<std::tuple<std::size_t, std::string, std::string>> known;
    for (std::size_t i = 1; i <= 2000; ++i) {
      results.grow_to(i);
      search_result& result = results.at(i);
      result.name = "n" + std::to_string(below(300));
      result.extension = below(2) == 0 ? "mp3" : "ogg";
      result.size = std::to_string(below(2));
      result.address = "10.0.0." + std::to_string(below(5));
      result.port = std::to_string(below(2));
      const auto [at, is_new] =
          row_of.try_emplace(std::tuple(result.name, result.extension, result.size), row_of.size());
      if (is_new) expected.emplace_back();
      if (known.emplace(at->second, result.address, result.port).second) {
        expected[at->second].push_back(i);
      }
      if (below(10) == 0) rows.catch_up();
    }
    rows.catch_up();
    ASSERT_EQ(rows.rows(), expected.size());
    for (std::size_t row = 1; row <= rows.rows(); ++row) {
      EXPECT_EQ(rows.results(row, 100), expected[row - 1]);
      EXPECT_EQ(rows.sources(row), expected[row - 1].size());
    }
    results.clear();
    rows.catch_up();
    EXPECT_EQ(rows.rows(), 0U);
    EXPECT_ANY_THROW((void)rows.first(1));
  }
}

TEST(NumberTable, LooksAtABoundedNumberOfPlaces) {
  NumberTable table;
  for (std::size_t number = 1; number <= 1000; ++number) {
    table.reserve_one();
    table.enter(42, number);
  }
  std::size_t looked_at = 0;
  const auto none = [&](std::size_t) {
    ++looked_at;
    return false;
  };
  EXPECT_EQ(table.find(42, none), 0U);
  EXPECT_LE(looked_at, NumberTable::kMostSteps);
  EXPECT_EQ(table.find(42, [](std::size_t number) { return number == 9; }), 9U);
}

}  // namespace
}  // namespace velmora
