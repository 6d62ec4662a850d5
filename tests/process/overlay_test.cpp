// Real servents in a chain on loopback: how one end learns of the others and connects to them.
#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>

#include "process/program.h"

namespace velmora::process {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

std::string address(int number) { return "127.0.0." + std::to_string(number); }

// One servent with the command that drives it.
class Resident {
 public:
  explicit Resident(int number)
      : address_(address(number)),
        program_({"velmorad", "--profile", profile_.path(), "--listen", address_}) {}

  bool runs() { return program_.wait_for_line("runs on profile"); }
  [[nodiscard]] const std::string& home() const { return address_; }

  // What velmora-cli prints, on standard error where it fails; it must end with this status.
  [[nodiscard]] std::string ask(std::vector<std::string> words, int status = 0) const {
    std::vector<std::string> arguments = {"velmora-cli", "--profile", profile_.path()};
    arguments.insert(arguments.end(), words.begin(), words.end());
    Program command(arguments);
    EXPECT_EQ(command.wait(), status) << words[0] << ": " << command.errors();
    return status == 0 ? command.output() : command.errors();
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

  // Looks again whenever one of these controls changes, for ten seconds.
  [[nodiscard]] bool wait_for(const std::string& control,
                              const std::function<bool()>& holds) const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!holds()) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      static_cast<void>(ask({"subscribe", control, "--count", "1", "--for", "0.3"}));
    }
    return true;
  }

 private:
  TemporaryFolder profile_;
  std::string address_;
  Program program_;
};

// With the default TTL, 5, a ping from one end reaches five of the seven others.
TEST(Overlay, OneEndOfAChainFindsAndMeetsTheOthers) {
  std::vector<std::unique_ptr<Resident>> chain;
  for (int number = 21; number <= 28; ++number) {
    chain.push_back(std::make_unique<Resident>(number));
  }
  for (const auto& resident : chain) ASSERT_TRUE(resident->runs()) << resident->home();
  for (std::size_t i = 0; i + 1 < chain.size(); ++i) {
    static_cast<void>(chain[i]->ask({"connect", chain[i + 1]->home()}));
  }
  const Resident& end = *chain[0];
  static_cast<void>(end.ask({"set", "max_out_host", "3"}));

  EXPECT_EQ(end.ask({"more"}), "Sent Ping to Socket: 1\n");
  // The farther away, the later the pong, and who ponged last stands first.
  const std::vector<std::string> reached = {address(26), address(25), address(24), address(23),
                                            address(22)};
  EXPECT_TRUE(end.wait_for("lcache", [&] { return end.hosts_in("lcache").size() >= 5; }));
  EXPECT_EQ(end.hosts_in("lcache"), reached);
  const Resident& last = *chain[5];
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
  Resident hermit(21);
  ASSERT_TRUE(hermit.runs());
  EXPECT_THAT(hermit.ask({"more"}, 1), HasSubstr("No Connections to send Ping!"));
  EXPECT_THAT(hermit.ask({"auto"}, 1), HasSubstr("no connection came about"));
  EXPECT_EQ(hermit.ask({"auto", "--detach", "--json"}), "{\"running\":false}\n");
  static_cast<void>(hermit.ask({"set", "max_out_host", "1e999"}));
  EXPECT_THAT(hermit.ask({"auto"}, 1), HasSubstr("Find_alive_hosts: Overflow"));
}

}  // namespace
}  // namespace velmora::process
