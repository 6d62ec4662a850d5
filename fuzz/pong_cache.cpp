// Pongs from strangers fill the host cache; then it is written and read again.
#include "fuzzed_parts.h"
#include "net/cache_file.h"
#include "protocol/payloads.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora;
  using namespace velmora::fuzz;
  sim::SimWorld world;
  sim::SimHost& host = world.add_host("10.0.0.1");
  CountingLog log;
  FilterArray filter;
  filter.grow_to(1);
  filter.at(1) = "10.";
  HostCache cache(host.platform().loop, filter, log);
  Input input(data, size);
  while (!input.empty()) {
    if (input.byte() % 16 == 0 && cache.rows() > 0) cache.remove(1 + input.byte() % cache.rows());
    DescriptorHeader header;
    header.ttl = static_cast<std::uint8_t>(input.byte());
    header.hops = static_cast<std::uint8_t>(input.byte());
    Pong pong;
    const std::size_t lines = log.lines;
    if (!str_to_pong(input.piece(), pong, log)) continue;
    const std::size_t rows = cache.rows();
    cache.set_cache_stat(header, pong, input.byte());
    if (is_filtered(filter, pong.address)) {
      require(cache.rows() == rows && cache.find(pong.address) == 0, "the filter keeps hosts out");
    } else if (log.lines == lines) {
      require(cache.find(pong.address) == 1, "who ponged last is first");
      require(cache.row(1).port == pong.port, "the newest pong counts");
    }
  }
  const std::string text = cache_text(cache);
  std::vector<CacheHost> read;
  read_cache(text, read);
  require(read.size() == cache.rows(), "every row comes back");
  for (std::size_t row = 1; row <= cache.rows(); ++row) {
    require(cache.find(cache.row(row).address) == row, "an address is there once");
    require(read[row - 1].address == cache.row(row).address &&
                read[row - 1].size == cache.row(row).size,
            "rows come back as they were");
  }
  return 0;
}
