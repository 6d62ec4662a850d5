// Many downloads one after the other from servers at full pace, small files that end while slow
// ones run, over elements of `downl` that are used again and again.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <map>
#include <vector>

#include "query_hits.h"
#include "transfer/farewells.h"

namespace velmora::sim {
namespace {

constexpr int kSmall = 200;
constexpr int kSlow = 20;
constexpr std::int64_t kStep_ms = 10;
constexpr std::int64_t kPace_ms = 500;
constexpr std::size_t kSlowPackets = 16;

// Serves every file that it is asked for; a slow one in packets. It closes behind the last byte, as
// web servers do and servents without a pause between packets.
class Server {
 public:
  Server(SimWorld& world, const std::string& address) : world_(world) {
    world.listen_raw(address, 6345, [this](RawPeer& peer) { clients_.push_back({&peer}); });
  }
  static std::string content(int number) {
    return fmt::format("{} of the files", number) +
           std::string(number < kSmall ? 300U : 32'000U, static_cast<char>('a' + number % 26));
  }
  void step() {
    for (Client& client : clients_) {
      if (client.next_ms > world_.now_ms() || client.peer->received().empty()) continue;
      serve(client);
    }
  }

 private:
  struct Client {
    RawPeer* peer;
    std::int64_t next_ms = 0;
    std::string rest = {};
    std::size_t packet = 0;
  };

  void serve(Client& client) {
    if (client.packet == 0) {
      const int number = std::stoi(client.peer->received().substr(9));
      client.rest = content(number);
      client.packet = number < kSmall ? client.rest.size() : client.rest.size() / kSlowPackets + 1;
      client.peer->send(
          fmt::format("HTTP 200 OK\r\nContent-length: {}\r\n\r\n", client.rest.size()));
      client.next_ms = world_.now_ms() + 5 * kStep_ms;
      return;
    }
    client.peer->send(client.rest.substr(0, client.packet));
    client.rest.erase(0, client.packet);
    client.next_ms = world_.now_ms() + kPace_ms;
    if (!client.rest.empty()) return;
    client.peer->close();
    client.next_ms = INT64_MAX;
  }

  SimWorld& world_;
  std::vector<Client> clients_;
};

// The longest file takes 16 packets; what takes longer than all of those and the farewells of the
// others has waited for a time-out.
TEST(DownloadCrowd, EveryFileArrivesAndNoneWaitsForATimeOut) {
  for (const bool overlay : {false, true}) {
    SCOPED_TRACE(overlay ? "Overlay" : "Classic");
    ServentRig rig({{"down_config", "/down"},
                    {"max_down", "60"},
                    {"whole_files_behaviour", overlay ? "on" : "off"},
                    {"plain_http_behaviour", overlay ? "on" : "off"}});
    rig.host.files().make_folder("/down");
    Server server(rig.world, "10.0.0.2");
    const auto neighbour = rig.connected_peer("10.0.0.2");
    const auto fetch = [&](int first, int count) {
      std::vector<HitFile> files;
      for (int i = first; i < first + count; ++i) {
        const auto number = static_cast<std::uint32_t>(i);
        files.push_back({number, static_cast<std::uint32_t>(Server::content(i).size()),
                         fmt::format("file {}.bin", i)});
      }
      rig.form().clear_search.click();
      neighbour->send(query_hit(2, files));
      rig.world.run_for(1200);
      for (std::size_t row = 1; row <= rig.form().lfound.rows(); ++row) {
        rig.form().lfound.activate(row);
      }
      rig.form().resume_down.click();
    };
    const auto run = [&](std::int64_t ms) {
      for (std::int64_t gone = 0; gone < ms; gone += kStep_ms) {
        server.step();
        rig.world.run_for(kStep_ms);
      }
    };
    fetch(0, kSmall);
    run(overlay ? 6000 : 1000);
    fetch(kSmall, kSlow);
    run(kFarewellMs + static_cast<std::int64_t>(kSlowPackets) * kPace_ms);
    for (int i = 0; i < kSmall + kSlow; ++i) {
      const std::string name = fmt::format("file {}.bin", i);
      EXPECT_EQ(rig.host.files().content("/down/" + name), Server::content(i)) << name;
    }
  }
}

}  // namespace
}  // namespace velmora::sim
