// The host cache's file, damaged or planted: read as far as it goes, and what was read comes back.
#include "net/cache_file.h"

#include "fuzzed_parts.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora;
  using namespace velmora::fuzz;
  sim::SimWorld world;
  sim::SimHost& host = world.add_host("10.0.0.1");
  CountingLog log;
  FilterArray filter;
  HostCache cache(host.platform().loop, filter, log);
  host.files().put(kCacheFile, std::string(reinterpret_cast<const char*>(data), size));
  const std::string error = load_cache(host.files(), kCacheFile, cache);
  require(error.empty() || error.starts_with("load_cache: "), "an error says whose it is");
  const std::string text = cache_text(cache);
  HostCache again(host.platform().loop, filter, log);
  host.files().put(kCacheFile, text);
  require(load_cache(host.files(), kCacheFile, again).empty(), "what is written can be read");
  require(cache_text(again) == text, "and is the same");
  return 0;
}
