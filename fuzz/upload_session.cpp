// A client sends the input's pieces to the upload port.
#include "fuzzed_servent.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora::sim;
  FuzzedServent fuzzed;
  auto client = fuzzed.world.connect_raw("10.0.0.2", "10.0.0.1", 6345);
  fuzzed.world.run_for(5);
  std::string_view input(reinterpret_cast<const char*>(data), size);
  while (!input.empty()) {
    client->send(next_piece(input));
    fuzzed.world.run_for(3);
  }
  fuzzed.world.run_for(40000);
  fuzzed.servent->shutdown();
  return 0;
}
