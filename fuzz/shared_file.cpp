// The shared list's file, damaged or planted: read as far as it goes, and what was read comes back.
#include "fuzzed_parts.h"
#include "share/shared_list_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora;
  using namespace velmora::fuzz;
  sim::SimWorld world;
  sim::SimHost& host = world.add_host("10.0.0.1");
  host.files().put(kSharedListFile, std::string(reinterpret_cast<const char*>(data), size));
  SharedIndex index;
  std::string total;
  const std::string error = load_shared(host.files(), kSharedListFile, index, total);
  require(error.empty() || error.starts_with("load_shared: "), "an error says whose it is");
  require(error.empty() != total.empty(), "the total is told on success only");
  const std::string text = shared_list_text(index.shared_files());
  SharedIndex again;
  host.files().put(kSharedListFile, text);
  require(load_shared(host.files(), kSharedListFile, again, total).empty(),
          "what is written reads");
  require(shared_list_text(again.shared_files()) == text, "and is the same");
  return 0;
}
