// A connected neighbour sends the input's pieces, each as one read; another neighbour listens.
#include "fuzzed_servent.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora::sim;
  FuzzedServent fuzzed;
  auto sender = fuzzed.world.connect_raw("10.0.0.2", "10.0.0.1", 6346);
  auto other = fuzzed.world.connect_raw("10.0.0.2", "10.0.0.1", 6346);
  fuzzed.world.run_for(5);
  sender->send("GNUTELLA CONNECT/0.4\n\n");
  other->send("GNUTELLA CONNECT/0.4\n\n");
  fuzzed.world.run_for(5);
  std::string_view input(reinterpret_cast<const char*>(data), size);
  while (!input.empty()) {
    sender->send(next_piece(input));
    fuzzed.world.run_for(3);
  }
  fuzzed.world.run_for(31000);
  fuzzed.servent->shutdown();
  return 0;
}
