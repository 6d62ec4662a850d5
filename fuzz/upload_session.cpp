// Clients ask the upload port for files, in pieces, slowly, without reading, twice; meanwhile the
// files change and a person stops uploads.
#include <array>

#include "fuzzed_parts.h"

namespace {

using namespace velmora;
using namespace velmora::fuzz;

void step(Input& input, FuzzedServent& fuzzed,
          std::array<std::unique_ptr<sim::RawPeer>, 3>& peers) {
  const unsigned choice = input.byte();
  auto& peer = peers[choice % 3];
  switch (choice / 3 % 9) {
    case 0:
      peer = fuzzed.world.connect_raw("10.0.0.2", "10.0.0.1", 6345);
      break;
    case 1:
      peer = fuzzed.world.connect_raw("10.0.0.2", "10.0.0.1", 6345);
      peer->send("GET /get/" + std::to_string(input.byte() % 4) + "/notes.txt HTTP:/1.0\r\n" +
                 std::string(input.piece()) + "\r\n\r\n");
      break;
    case 2:
      if (peer) peer->close();
      break;
    case 3:
      if (peer) peer->reset();
      break;
    case 4:
      if (peer) peer->set_reading(input.byte() % 2 == 0);
      break;
    case 5:
      fuzzed.world.run_for(10 * static_cast<std::int64_t>(input.byte()));
      break;
    case 6:
      double_click(fuzzed.form().lupload, input.byte());
      break;
    case 7:
      if (input.byte() % 4 == 0) {
        fuzzed.host.files().remove("music/notes.txt");
      } else {
        fuzzed.host.files().put("music/notes.txt", std::string(input.piece()));
      }
      break;
    default:
      if (peer) peer->send(input.piece());
  }
  fuzzed.world.run_for(3);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedServent fuzzed;
  std::array<std::unique_ptr<sim::RawPeer>, 3> peers;
  Input input(data, size);
  for (int i = 0; i < 200 && !input.empty(); ++i) {
    step(input, fuzzed, peers);
    for (const auto& peer : peers) {
      if (!peer || peer->received().size() < 20) continue;
      const std::string& said = peer->received();
      require(said.starts_with("HTTP 200 OK\r\n") || said.starts_with("That filenum (") ||
                  said.starts_with("This file: "),
              "an answer is one of three");
    }
  }
  peers = {};
  fuzzed.world.run_for(41'000);
  require(fuzzed.servent->form().lupload.rows() <= 200, "slots are used again");
  for (std::size_t row = 1; row <= fuzzed.form().lupload.rows(); ++row) {
    const std::string status = fuzzed.form().lupload.cell(row, 3);
    require(!status.starts_with("Uploading") && status != "accepting",
            "no upload stays once the clients are gone");
  }
  fuzzed.servent->shutdown();
  return 0;
}
