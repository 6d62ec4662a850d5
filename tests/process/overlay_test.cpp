// Real servents in a chain on loopback: how one end learns of the others and connects to them.
#include <gmock/gmock.h>

#include <memory>
#include <nlohmann/json.hpp>

#include "process/program.h"

namespace velmora::process {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

std::string address(int number) { return "127.0.0." + std::to_string(number); }

struct Neighbour : Resident {
  explicit Neighbour(int number) : Resident(address(number)), home(address(number)) {}

  // What velmora-cli prints, on standard error where it fails; it must end with this status.
  [[nodiscard]] std::string ask(const std::vector<std::string>& words, int status = 0) const {
    const Outcome outcome = Resident::ask(words);
    EXPECT_EQ(outcome.status, status) << words[0] << ": " << outcome.errors;
    return status == 0 ? outcome.output : outcome.errors;
  }
  // The addresses of the hosts in a list's first column, ports left out.
  [[nodiscard]] std::vector<std::string> hosts_in(const std::string& list) const {
    std::vector<std::string> out;
    const json answer = json::parse(ask({"rows", list, "--json"}));
    for (const json& row : answer["rows"]) {
      const std::string host = row[0];
      out.push_back(host.substr(0, host.find(':')));
    }
    return out;
  }

  std::string home;
};

// With the default TTL, 5, a ping from one end reaches five of the seven others.
TEST(Overlay, OneEndOfAChainFindsAndMeetsTheOthers) {
  std::vector<std::unique_ptr<Neighbour>> chain;
  for (int number = 21; number <= 28; ++number) {
    chain.push_back(std::make_unique<Neighbour>(number));
  }
  for (std::size_t i = 0; i + 1 < chain.size(); ++i) {
    static_cast<void>(chain[i]->ask({"connect", chain[i + 1]->home}));
  }
  const Neighbour& end = *chain[0];
  static_cast<void>(end.ask({"set", "max_out_host", "3"}));

  EXPECT_EQ(end.ask({"more"}), "Sent Ping to Socket: 1\n");
  // The farther away, the later the pong, and who ponged last stands first.
  const std::vector<std::string> reached = {address(26), address(25), address(24), address(23),
                                            address(22)};
  EXPECT_TRUE(end.wait_for("lcache", [&] { return end.hosts_in("lcache").size() >= 5; }));
  EXPECT_EQ(end.hosts_in("lcache"), reached);
  const Neighbour& last = *chain[5];
  std::string pings;
  EXPECT_TRUE(last.wait_for("ping_stat", [&] {
    pings = last.ask({"get", "ping_stat"});
    return pings.starts_with("1");
  }));
  EXPECT_EQ(pings, "1 / 0\n") << "the ping goes no further than its TTL";

  std::vector<std::string> connected;
  const json answer = json::parse(end.ask({"auto", "--json"}));
  EXPECT_EQ(answer["running"], false);
  for (const json& row : answer["rows"]) {
    const std::string host = row["Hosts"];
    connected.push_back(host.substr(0, host.find(':')));
  }
  // The neighbour from before, and three hosts of the cache.
  EXPECT_THAT(connected, UnorderedElementsAre(address(22), address(24), address(25), address(26)));
  EXPECT_THAT(chain[5]->hosts_in("lHosts"),
              UnorderedElementsAre(address(25), address(27), address(21)));
}

TEST(Overlay, AServentAloneSaysWhatItLacks) {
  const Neighbour hermit(21);
  EXPECT_THAT(hermit.ask({"connect", "127.0.0.22:65536"}, 1), HasSubstr("is no port"));
  EXPECT_THAT(hermit.ask({"more"}, 1), HasSubstr("No Connections to send Ping!"));
  EXPECT_THAT(hermit.ask({"auto"}, 1), HasSubstr("no connection came about"));
  EXPECT_EQ(hermit.ask({"auto", "--detach", "--json"}), "{\"running\":false}\n");
  static_cast<void>(hermit.ask({"set", "max_out_host", "1e999"}));
  EXPECT_THAT(hermit.ask({"auto"}, 1), HasSubstr("Find_alive_hosts: Overflow"));
}

}  // namespace
}  // namespace velmora::process
