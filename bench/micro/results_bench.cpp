// Search results: a hit of 50 from the wire into the list, the memory of a full list, and one
// screen of its rows.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "app/form_debug_log.h"
#include "micro/made_names.h"
#include "net/dns_names.h"
#include "net/host_cache.h"
#include "platform/uv/uv_dns_client.h"
#include "platform/uv/uv_loop.h"
#include "protocol/payloads.h"
#include "transfer/search_results.h"

namespace velmora::bench {
namespace {

constexpr std::size_t kHit = 50;
constexpr std::size_t kFilling = kMaxSearchResults / kHit;  // descriptors that fill the list
constexpr std::size_t kScreen = 50;                         // rows
constexpr std::size_t kUsualHits = 200;
// Names so long that the budget for names and the one for rows are reached together.
constexpr std::size_t kLongName = kMaxSearchResultBytes / kMaxSearchResults;

struct Results {
  uv::UvLoop loop;
  uv::UvDnsClient dns{loop, ""};
  Form form;
  FilterArray filter{100};
  FormDebugLog log{form.frmDebug};
  HostCache cache{loop, filter, log};
  DnsLookups lookups{dns, form};
  DnsNames names{cache, lookups, log};
  SearchResults results{loop, form, log, names, {}};
};

// The payload of a hit as it comes from the wire.
struct WireHit {
  DescriptorHeader header;
  std::string descriptor;
};

std::vector<WireHit> wire_hits(std::size_t count, std::size_t name_bytes) {
  MadeNames made;
  Form form;
  FormDebugLog log(form.frmDebug);
  std::vector<WireHit> hits;
  for (std::size_t i = 0; i < count; ++i) {
    QueryHit hit;
    hit.hits = kHit;
    hit.port = 6346;
    hit.address = "81.2." + std::to_string(i / 250) + "." + std::to_string(i % 250);
    hit.speed = 56;
    std::deque<std::string> names;
    for (std::size_t entry = 0; entry < kHit; ++entry) {
      std::string& name = names.emplace_back(made.next());
      if (name.size() < name_bytes) name.insert(0, name_bytes - name.size(), 'n');
      hit.results.push_back({static_cast<float>(entry + 1), 3456789, name});
    }
    WireHit wire;
    const std::string payload = query_reply_to_str(hit, log);
    wire.header.function = kQueryHit;
    wire.header.payload_length = static_cast<float>(payload.size());
    wire.descriptor = header_to_str(wire.header, log) + payload;
    hits.push_back(std::move(wire));
  }
  return hits;
}

// Decoded twice, as the framing and the router do between them.
void take(Results& program, const WireHit& hit) {
  benchmark::DoNotOptimize(str_to_query_reply(hit.header, hit.descriptor, program.log));
  program.results.set_query_reply_view(str_to_query_reply(
      hit.header, std::string_view(hit.descriptor).substr(kHeaderSize), program.log));
}

void fill(Results& program, const std::vector<WireHit>& hits) {
  for (std::size_t i = 0; i < kFilling; ++i) take(program, hits[i % hits.size()]);
}

void hit_of_50(benchmark::State& state) {
  const auto hits = wire_hits(kUsualHits, 0);
  auto program = std::make_unique<Results>();
  std::size_t taken = 0;
  for (auto _ : state) {
    if (taken == kFilling) {
      state.PauseTiming();
      program->results.clear_search();
      taken = 0;
      state.ResumeTiming();
    }
    take(*program, hits[taken++ % hits.size()]);
  }
  if (program->results.search_results().upper_bound() != taken * kHit) {
    state.SkipWithError("results are missing");
  }
}
BENCHMARK(hit_of_50)->Unit(benchmark::kMicrosecond);

std::size_t allocated() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void memory_of_200000(benchmark::State& state, std::size_t name_bytes) {
  const auto hits = wire_hits(kUsualHits, name_bytes);
  double wire = 0;
  for (const WireHit& hit : hits) wire += static_cast<double>(hit.descriptor.size());
  wire *= static_cast<double>(kFilling) / static_cast<double>(hits.size());
  for (auto _ : state) {
    Results program;
    const std::size_t before = allocated();
    fill(program, hits);
    const auto grown = static_cast<double>(allocated() - before);
    if (program.results.search_results().upper_bound() != kMaxSearchResults) {
      state.SkipWithError("not a full list");
    }
    state.counters["MiB"] = grown / (1 << 20);
    state.counters["per_wire_byte"] = grown / wire;
  }
}
BENCHMARK_CAPTURE(memory_of_200000, usual_names, 0)->Iterations(1);
BENCHMARK_CAPTURE(memory_of_200000, at_the_budget, kLongName - 5)->Iterations(1);

// Every cell and tool-tip that a screen shows, from anywhere in the list.
void screen_of_rows(benchmark::State& state) {
  const auto hits = wire_hits(kUsualHits, 0);
  Results program;
  fill(program, hits);
  program.results.display_query_reply();
  const ListView& list = program.form.lfound;
  MadeNames chance;
  for (auto _ : state) {
    const std::size_t first = 1 + chance.below(list.rows() - kScreen);
    for (std::size_t row = first; row < first + kScreen; ++row) {
      for (std::size_t column = 1; column <= list.columns().size(); ++column) {
        benchmark::DoNotOptimize(list.cell(row, column));
        benchmark::DoNotOptimize(list.cell_tooltip(row, column));
      }
    }
  }
}
BENCHMARK(screen_of_rows)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace velmora::bench
