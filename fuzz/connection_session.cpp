// Two neighbours of one servent do what the input says: shake hands, send bytes (one piece is one
// read), stop and go on reading, end; a person connects, searches, asks for more and disconnects.
#include <array>

#include "fuzzed_parts.h"

namespace {

using namespace velmora;
using namespace velmora::fuzz;

void step(Input& input, FuzzedServent& fuzzed,
          std::array<std::unique_ptr<sim::RawPeer>, 2>& peers) {
  const unsigned choice = input.byte();
  auto& peer = peers[choice % 2];
  switch (choice / 2 % 10) {
    case 0:
      peer = fuzzed.world.connect_raw("10.0.0.2", "10.0.0.1", 6346);
      fuzzed.world.run_for(3);
      peer->send(kHello);
      break;
    case 1:
      if (peer) peer->close();
      break;
    case 2:
      if (peer) peer->reset();
      break;
    case 3:
      if (peer) peer->set_reading(input.byte() % 2 == 0);
      break;
    case 4:
      fuzzed.world.run_for(100 * static_cast<std::int64_t>(input.byte()));
      break;
    case 5:
      fuzzed.form().Tsearch.enter(std::string(input.piece()));
      break;
    case 6:
      fuzzed.form().more_cache.click();
      break;
    case 7:
      double_click(fuzzed.form().lHosts, input.byte());
      break;
    case 8:
      fuzzed.form().new_host.enter(std::string(input.piece()));
      break;
    default:
      if (peer) peer->send(input.piece());
  }
  fuzzed.world.run_for(3);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedServent fuzzed;
  std::array<std::unique_ptr<sim::RawPeer>, 2> peers;
  Input input(data, size);
  for (int i = 0; i < 200 && !input.empty(); ++i) step(input, fuzzed, peers);
  peers = {};
  fuzzed.world.run_for(41'000);
  for (std::size_t row = 1; row <= fuzzed.form().lHosts.rows(); ++row) {
    const std::string status = fuzzed.form().lHosts.cell(row, 4);
    require(status == "Sock freed", "every slot is free again once the peers are gone");
  }
  fuzzed.servent->shutdown();
  return 0;
}
