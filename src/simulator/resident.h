// One servent of a simulated network with its machine, its person and the checks on it. It can end,
// be killed, lose its power, and start again on the same profile.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/servent.h"
#include "platform/sim/sim_chance.h"
#include "platform/sim/sim_world.h"
#include "simulator/invariants.h"
#include "simulator/watched_platform.h"

namespace velmora::simulator {

class Resident {
 public:
  using Tell = std::function<void(const std::string& line)>;

  // The world must outlive the servent, and this object the world's events.
  Resident(sim::SimWorld& world, std::size_t number, std::uint64_t seed, Tell tell);
  ~Resident();
  Resident(const Resident&) = delete;
  Resident& operator=(const Resident&) = delete;

  static std::string address_of(std::size_t number);

  void start();
  // Without a shutdown, as a kill does it; without power also what was not synced is lost.
  void kill(bool power_too);
  // The ordered shutdown and its checks; returns what does not hold.
  std::string end();
  [[nodiscard]] bool runs() const { return servent_ != nullptr; }

  // Something that a person does; returns what it was.
  std::string act(const std::vector<std::string>& addresses);
  void do_on_form(const std::function<void(Form&)>& action);
  // Whether an event came since the last check, and what does not hold.
  [[nodiscard]] bool touched() const { return invariants_.touched(); }
  std::string check();

  [[nodiscard]] sim::SimHost& host() { return host_; }
  void plant(Plant fault) { platform_.plant(fault); }
  [[nodiscard]] SeamFaults& faults() { return platform_.faults(); }
  [[nodiscard]] Invariants& invariants() { return invariants_; }
  [[nodiscard]] const Held& held() const { return platform_.held(); }

 private:
  void share_files();
  void act_on(Form& form, const std::vector<std::string>& addresses, std::size_t what,
              std::string& told);

  sim::SimWorld& world_;
  std::size_t number_;
  sim::SimHost& host_;
  sim::Chance chance_;
  Tell tell_;
  Invariants invariants_;
  WatchedPlatform platform_;
  std::unique_ptr<Servent> servent_;
  bool ended_ = false;  // by its person; it goes with the next check
};

}  // namespace velmora::simulator
