// Fifty servents, ten minutes, everything that can go wrong: afterwards each counter that a person
// sees must be the one that the model works out from the record of the network alone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

#include "network_model.h"
#include "shown_counters.h"
#include "town.h"

namespace velmora::model {
namespace {

constexpr std::uint64_t kSeed = 20000630;
constexpr std::size_t kMostShown = 10;
constexpr std::int64_t kRefresh_us = 500'000;

// Trouble that other modules have with what strangers send is no business of the network's model.
Lines network_lines(const Lines& log) {
  Lines lines;
  for (const std::string& line : log) {
    const bool foreign = line.starts_with("Error: set_cache_stat: ") ||
                         line.starts_with("Error: set_query_reply_view: ") ||
                         line.starts_with("parse_filename: ");
    if (!foreign) lines.push_back(line);
  }
  return lines;
}

// When bytes last reached or left anybody.
std::int64_t last_bytes_us(const sim::SimWorld& world) {
  const auto& transcript = world.transcript();
  const auto last = std::find_if(transcript.rbegin(), transcript.rend(),
                                 [](const auto& entry) { return !entry.data.empty(); });
  return last == transcript.rend() ? 0 : last->time_us;
}

// The first lines that differ; thousands of equal ones would hide them.
std::string difference(const Lines& shown, const Lines& expected) {
  std::string text;
  std::size_t found = 0;
  for (std::size_t i = 0; i < std::max(shown.size(), expected.size()); ++i) {
    const std::string left = i < shown.size() ? shown[i] : "(none)";
    const std::string right = i < expected.size() ? expected[i] : "(none)";
    if (left == right) continue;
    if (++found > kMostShown) break;
    text += std::to_string(i) + ": " + left + " | expected: " + right + "\n";
  }
  return text;
}

TEST(FiftyServents, EveryCounterIsWhatTheModelSays) {
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  Town town(kSeed);
  town.live(280);
  town.rest(45);  // long enough for every connection to fall silent
  town.live(260);
  town.rest(15);
  ASSERT_LT(last_bytes_us(town.world()), town.world().now_us() - kRefresh_us)
      << "labels may lag behind the counters";

  Counters sum;
  std::size_t refused = 0;
  std::size_t fallen_silent = 0;
  std::size_t drops = 0;
  std::size_t postponed = 0;
  for (const Resident& resident : town.residents()) {
    SCOPED_TRACE(resident.address);
    const NetworkModel model = town.model_of(resident);
    EXPECT_THAT(model.complaints(), testing::IsEmpty());
    const Form& form = resident.servent->form();
    EXPECT_EQ(shown_labels(form), model.labels());
    EXPECT_EQ(shown_host_counts(form), model.host_counts());
    EXPECT_EQ(difference(network_lines(resident.log), model.log()), "");

    const Counters& c = model.counters();
    sum.dropped += c.dropped;
    sum.route_errors += c.route_errors;
    sum.pings_in += c.pings_in;
    sum.pings_out += c.pings_out;
    sum.my_pings_in += c.my_pings_in;
    sum.my_pings_out += c.my_pings_out;
    sum.pongs_in += c.pongs_in;
    sum.pongs_out += c.pongs_out;
    sum.my_pongs_in += c.my_pongs_in;
    sum.my_pongs_out += c.my_pongs_out;
    sum.queries_in += c.queries_in;
    sum.hits_in += c.hits_in;
    sum.pushes_in += c.pushes_in;
    sum.unknown += c.unknown;
    refused += model.refused();
    fallen_silent += model.fallen_silent();
    postponed += model.postponed();
    drops += static_cast<std::size_t>(std::count_if(
        resident.log.begin(), resident.log.end(),
        [](const std::string& line) { return line.find("Bad header length") != line.npos; }));
  }

  // The mix is worth the comparison only if everything did happen.
  const std::pair<const char*, float> moved[] = {
      {"dropped", sum.dropped},
      {"route errors", sum.route_errors},
      {"pings in", sum.pings_in},
      {"pings out", sum.pings_out},
      {"my pings in", sum.my_pings_in},
      {"my pings out", sum.my_pings_out},
      {"pongs in", sum.pongs_in},
      {"pongs out", sum.pongs_out},
      {"my pongs in", sum.my_pongs_in},
      {"my pongs out", sum.my_pongs_out},
      {"queries in", sum.queries_in},
      {"query hits in", sum.hits_in},
      {"pushes in", sum.pushes_in},
      {"unknown", sum.unknown},
      {"refused", static_cast<float>(refused)},
      {"bad lengths", static_cast<float>(drops)},
      {"postponed rests", static_cast<float>(postponed)},
      {"fallen silent", static_cast<float>(fallen_silent)}};
  for (const auto& [what, count] : moved) EXPECT_GT(count, 0) << what;
}

TEST(FiftyServents, TheSameSeedGivesTheSameTrace) {
  const auto trace = [](std::uint64_t seed) {
    Town town(seed);
    town.live(20);
    return town.world().trace();
  };
  const std::string first = trace(kSeed);
  EXPECT_TRUE(first == trace(kSeed)) << "seed " << kSeed;
  EXPECT_FALSE(first == trace(kSeed + 1)) << "the seed decides nothing";
}

}  // namespace
}  // namespace velmora::model
