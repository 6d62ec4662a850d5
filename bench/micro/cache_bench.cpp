// A pong into a full host cache of 10,000 rows, against an array whose rows are shifted.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "load/descriptors.h"
#include "micro/engine_stubs.h"
#include "net/host_cache.h"
#include "platform/uv/uv_loop.h"

namespace velmora::bench {
namespace {

std::string address_of(std::size_t number) {
  return "81." + std::to_string(number >> 16 & 255) + "." + std::to_string(number >> 8 & 255) +
         "." + std::to_string(number & 255);
}

Pong pong_of(std::string address) {
  Pong pong;
  pong.port = 6346;
  pong.address = std::move(address);
  pong.files = 40;
  pong.kilobytes = 123456;
  return pong;
}

// The filter that a new profile has.
FilterArray private_addresses() {
  FilterArray filter(100);
  for (const char* prefix : {"10.", "192.168.", "172.16.", "127."}) {
    filter.grow_to(filter.upper_bound() + 1);
    filter.at(filter.upper_bound()) = prefix;
  }
  return filter;
}

void pong_into_cache(benchmark::State& state, bool known) {
  const uv::UvLoop loop;
  const FilterArray filter = private_addresses();
  CountingLog log;
  HostCache cache(loop, filter, log);
  const DescriptorHeader header{
      .guid = {}, .function = kPong, .ttl = 3, .hops = 2, .payload_length = 14};
  for (std::size_t i = 0; i < kMaxCacheHosts; ++i) {
    cache.set_cache_stat(header, pong_of(address_of(i)), 1);
  }
  // As many addresses as the cache holds are known; of ten times as many, each comes when it has
  // been forgotten.
  std::vector<Pong> pongs;
  Chance chance(3);
  for (std::size_t i = 0; i < 10 * kMaxCacheHosts; ++i) {
    pongs.push_back(pong_of(address_of(known ? chance.below(kMaxCacheHosts) : i + kMaxCacheHosts)));
  }
  std::size_t at = 0;
  for (auto _ : state) {
    cache.set_cache_stat(header, pongs[at], 1);
    at = (at + 1) % pongs.size();
  }
  if (cache.rows() != kMaxCacheHosts || log.lines != 0) state.SkipWithError("not a full cache");
}
BENCHMARK_CAPTURE(pong_into_cache, of_a_known_host, true);
BENCHMARK_CAPTURE(pong_into_cache, of_a_new_host, false);

void shifted_array(benchmark::State& state) {
  std::vector<CacheHost> rows(kMaxCacheHosts);
  for (std::size_t i = 0; i < rows.size(); ++i) rows[i].address = address_of(i);
  Chance chance(3);
  for (auto _ : state) {
    const std::string address = address_of(chance.below(kMaxCacheHosts));
    std::size_t row = 0;
    while (rows[row].address != address) ++row;
    CacheHost fresh = std::move(rows[row]);
    for (; row > 0; --row) rows[row] = std::move(rows[row - 1]);
    rows[0] = std::move(fresh);
  }
}
BENCHMARK(shifted_array);

}  // namespace
}  // namespace velmora::bench
