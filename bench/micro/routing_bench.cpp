// A look-up in the full routing table, against scans of the same 401 identifiers.
#include <benchmark/benchmark.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "load/descriptors.h"
#include "net/routing_table.h"

namespace velmora::bench {
namespace {

std::string make_guid(Chance& chance) {
  const std::uint64_t halves[2] = {chance.next(), chance.next()};
  std::string guid(kGuidSize, '\0');
  std::memcpy(guid.data(), halves, kGuidSize);
  return guid;
}

// Identifiers of a full table, and the order in which they are asked for.
struct Asked {
  Asked() {
    Chance chance(1);
    for (std::size_t i = 0; i < RoutingTable::kEntries; ++i) guids.push_back(make_guid(chance));
    for (std::size_t i = 0; i < 4096; ++i) order.push_back(chance.below(guids.size()));
  }
  std::vector<std::string> guids;
  std::vector<std::size_t> order;
};

void known_identifier(benchmark::State& state) {
  const Asked asked;
  RoutingTable table;
  for (const std::string& guid : asked.guids) {
    Route route{.connection = 1};
    table.seen_guid(guid, route);
  }
  std::size_t at = 0;
  for (auto _ : state) {
    Route route;
    if (!table.seen_guid(asked.guids[asked.order[at]], route)) state.SkipWithError("not found");
    benchmark::DoNotOptimize(route);
    at = (at + 1) % asked.order.size();
  }
}
BENCHMARK(known_identifier);

// Not found, and entered: what a new descriptor costs.
void new_identifier(benchmark::State& state) {
  Chance chance(2);
  std::vector<std::string> guids;
  guids.reserve(16384);
  for (int i = 0; i < 16384; ++i) guids.push_back(make_guid(chance));
  RoutingTable table;
  std::size_t at = 0;
  for (auto _ : state) {
    Route route{.connection = 1};
    if (table.seen_guid(guids[at], route)) state.SkipWithError("found");
    at = (at + 1) % guids.size();
  }
}
BENCHMARK(new_identifier);

void scan_of_strings(benchmark::State& state) {
  const Asked asked;
  std::size_t at = 0;
  for (auto _ : state) {
    const std::string& wanted = asked.guids[asked.order[at]];
    std::size_t position = 0;
    while (asked.guids[position] != wanted) ++position;
    benchmark::DoNotOptimize(position);
    at = (at + 1) % asked.order.size();
  }
}
BENCHMARK(scan_of_strings);

void scan_of_two_words(benchmark::State& state) {
  const Asked asked;
  std::vector<std::array<std::uint64_t, 2>> entries(asked.guids.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    std::memcpy(entries[i].data(), asked.guids[i].data(), kGuidSize);
  }
  std::size_t at = 0;
  for (auto _ : state) {
    std::array<std::uint64_t, 2> wanted{};
    std::memcpy(wanted.data(), asked.guids[asked.order[at]].data(), kGuidSize);
    std::size_t position = 0;
    while (entries[position] != wanted) ++position;
    benchmark::DoNotOptimize(position);
    at = (at + 1) % asked.order.size();
  }
}
BENCHMARK(scan_of_two_words);

}  // namespace
}  // namespace velmora::bench
