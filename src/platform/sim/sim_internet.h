// What all hosts of one simulated world share: clock, conditions, chance, names, the addresses that
// exist and the ports that are listened on. Owned by the world; it holds no connection.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "platform/sim/sim_chance.h"
#include "platform/sim/sim_recorder.h"
#include "platform/sim/sim_scheduler.h"
#include "platform/sim/sim_world.h"

namespace velmora::sim {

class ListeningPort;

class Internet {
 public:
  Internet(Scheduler& clock, std::uint64_t world_seed)
      : scheduler(clock), seed(world_seed), chance(world_seed) {}

  Scheduler& scheduler;
  const std::uint64_t seed;
  Chance chance;
  NetworkConditions conditions;
  Recorder recorder;
  std::map<std::string, std::string> names;  // name -> dotted address
  std::set<std::string> addresses;           // those that answer at all

  // The dotted address that is meant; nothing for a name nobody has and an address nobody can have.
  [[nodiscard]] std::optional<std::string> resolve(const std::string& host) const;

  // A port of 0 takes a free one. Raises "Address already in use".
  std::shared_ptr<ListeningPort> listen(const std::string& address, std::uint16_t port,
                                        int backlog);
  [[nodiscard]] std::shared_ptr<ListeningPort> listening(const std::string& address,
                                                         std::uint16_t port) const;
  // The next port of this address that the kernel would choose; the same order in every run.
  std::uint16_t ephemeral_port(const std::string& address);
  std::uint64_t next_socket_number() { return ++last_socket_number_; }

 private:
  std::map<std::pair<std::string, std::uint16_t>, std::weak_ptr<ListeningPort>> ports_;
  std::map<std::string, std::uint16_t> ephemeral_used_;
  std::uint64_t last_socket_number_ = 0;
};

}  // namespace velmora::sim
