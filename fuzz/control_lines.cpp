// A person's program sends the input's lines to the control socket.
#include "fuzzed_servent.h"
#include "platform/sim/sim_control.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velmora::sim;
  FuzzedServent fuzzed;
  std::string_view input(reinterpret_cast<const char*>(data), size);
  while (!input.empty() && fuzzed.host.control().is_open()) {
    const std::size_t end = std::min(input.find('\n'), input.size());
    fuzzed.host.control().say(input.substr(0, end));
    input.remove_prefix(std::min(end + 1, input.size()));
    fuzzed.world.run_for(1);
  }
  fuzzed.servent->shutdown();
  return 0;
}
