// Query hits from strangers become results, and results are shown.
#include "fuzzed_parts.h"
#include "protocol/payloads.h"
#include "transfer/search_results.h"

namespace {

class NoNames : public velmora::HostNames {
 public:
  std::string dns_from_cache(const std::string&) override { return "?"; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora;
  using namespace velmora::fuzz;
  sim::SimWorld world;
  sim::SimHost& host = world.add_host("10.0.0.1");
  Form form;
  CountingLog log;
  NoNames names;
  SearchResults results(host.platform().loop, form, log, names, [] {});
  Input input(data, size);
  while (!input.empty()) {
    DescriptorHeader header;
    header.payload_length = static_cast<float>(input.number() % 32001);
    const std::string_view payload = input.piece();
    const std::size_t lines = log.lines;
    const QueryHit hit = str_to_query_reply(header, payload, log);
    require(log.lines > lines, "a decoded hit says how it ended");
    std::size_t bytes = 0;
    for (const QueryHitResult& result : hit.results) {
      bytes += result.file_name.size() + 10;
      require(result.file_name.find(std::string_view("\0\0", 2)) == std::string::npos,
              "a name ends at the first pair of zeros");
    }
    require(hit.results.size() <= 255 && bytes <= payload.size(), "only what is there is read");
    const std::size_t rows = results.search_results().upper_bound();
    results.set_query_reply_view(hit);
    require(results.search_results().upper_bound() <= rows + hit.results.size(),
            "the list grows by the entries read");
  }
  world.run_for(1100);
  for (std::size_t row = 1; row <= form.lfound.rows(); ++row) {
    for (std::size_t column = 1; column <= 7; ++column)
      static_cast<void>(form.lfound.cell(row, column));
    static_cast<void>(form.lfound.cell_tooltip(row, 4));
  }
  return 0;
}
