#include "simulator/scenario.h"

#include <fmt/format.h>

#include <array>
#include <utility>
#include <vector>

#include "platform/sim/sim_chance.h"
#include "platform/sim/sim_world.h"
#include "simulator/resident.h"
#include "simulator/shared_world.h"
#include "simulator/stranger.h"

namespace velmora::simulator {
namespace {

constexpr std::int64_t kStep_ms = 250;
constexpr std::int64_t kKernelForgets_ms = 140'000;
constexpr std::size_t kStrangers = 2;

class Scenario {
 public:
  explicit Scenario(const ScenarioOptions& options);
  ~Scenario();
  Scenario(const Scenario&) = delete;
  Scenario& operator=(const Scenario&) = delete;
  ScenarioResult run();

 private:
  bool turn(std::int64_t ms);
  bool check();
  void live_a_step();
  void change_network();
  void hurt(Resident& resident);
  void script_dns();
  void end_all();
  void tell(const std::string& line) const;

  const ScenarioOptions& options_;
  sim::Chance chance_;
  ScenarioResult result_;
  std::vector<std::unique_ptr<Resident>> residents_;  // go behind the world
  std::unique_ptr<sim::SimWorld> world_;
  std::vector<std::unique_ptr<Stranger>> strangers_;
  std::vector<std::string> addresses_;
};

Scenario::Scenario(const ScenarioOptions& options)
    : options_(options),
      chance_(options.seed * 0x9E3779B97F4A7C15U + 1),
      world_(std::make_unique<sim::SimWorld>(options.seed)) {
  const bool large = chance_.below(40) == 0;
  result_.servents = 5 + chance_.below(large ? 26 : 4);
  result_.seconds = 60 + static_cast<std::int64_t>(chance_.below(large ? 541 : 20));
  if (options.servents > 0) result_.servents = options.servents;
  if (options.seconds > 0) result_.seconds = options.seconds;
  for (std::size_t i = 1; i <= result_.servents; ++i) {
    residents_.push_back(
        std::make_unique<Resident>(*world_, i, options.seed * 100 + i, options.tell));
    residents_.back()->plant(options.plant);
    addresses_.push_back(Resident::address_of(i));
  }
  for (std::size_t i = 1; i <= kStrangers; ++i) {
    const std::string address = fmt::format("24.9.0.{}", i);
    strangers_.push_back(std::make_unique<Stranger>(*world_, address, options.seed * 100 + 90 + i));
    addresses_.push_back(address);
  }
  addresses_.emplace_back("24.8.0.1");  // nobody is there
  script_dns();
}

Scenario::~Scenario() {
  for (const auto& resident : residents_) resident->kill(false);
  strangers_.clear();
  world_.reset();
}

void Scenario::tell(const std::string& line) const {
  if (options_.tell) options_.tell(fmt::format("{:>7} ms  {}", world_->now_ms(), line));
}

// Looks at every servent that an event has touched. False: something does not hold.
bool Scenario::check() {
  if (!result_.fault.empty()) return false;
  for (const auto& resident : residents_) {
    if (!resident->touched()) continue;
    ++result_.checks;
    const std::string fault = resident->check();
    if (fault.empty()) continue;
    result_.fault = resident->host().address() + ": " + fault;
    return false;
  }
  return true;
}

bool Scenario::turn(std::int64_t ms) {
  world_->run_until([this] { return !check(); }, ms);
  return result_.fault.empty();
}

ScenarioResult Scenario::run() {
  for (const auto& resident : residents_) resident->start();
  while (world_->now_ms() < result_.seconds * 1000 && check()) {
    live_a_step();
    if (!turn(kStep_ms)) break;
  }
  if (result_.fault.empty()) end_all();
  result_.time_ms = world_->now_ms();
  for (const auto& resident : residents_) {
    result_.forwarded += resident->invariants().witness().forwarded();
    result_.files_finished += resident->invariants().files_finished();
  }
  return result_;
}

void Scenario::live_a_step() {
  Resident& somebody = *residents_[chance_.below(residents_.size())];
  if (!somebody.runs()) {
    tell(somebody.host().address() + " starts again");
    somebody.start();
    return;
  }
  if (chance_.below(2) == 0) {
    const std::string what = somebody.act(addresses_);
    if (!what.empty()) tell(somebody.host().address() + " " + what);
  }
  if (chance_.below(3) == 0) {
    Stranger& stranger = *strangers_[chance_.below(strangers_.size())];
    stranger.act(addresses_[chance_.below(residents_.size())]);
  }
  if (chance_.below(20) == 0) change_network();
  if (chance_.below(15) == 0) hurt(somebody);
}

void Scenario::change_network() {
  sim::NetworkConditions& network = world_->conditions();
  network = {};
  if (chance_.below(3) == 0) return tell("the network is quiet");
  const auto some = [&](double most) {
    return chance_.below(3) == 0 ? most * static_cast<double>(chance_.below(100)) / 100 : 0;
  };
  network.latency_us = static_cast<std::int64_t>(1000 + chance_.below(100'000));
  network.jitter_us = static_cast<std::int64_t>(chance_.below(100'000));
  network.bandwidth = chance_.below(3) == 0 ? 2000 : 0;
  network.split_probability = some(0.5);
  network.join_probability = some(0.3);
  network.trickle_probability = some(0.1);
  network.reset_probability = some(0.05);
  network.refuse_probability = some(0.5);
  network.silent_connect_probability = some(0.5);
  if (chance_.below(8) == 0) network.receive_window = chance_.below(2) == 0 ? 0 : 1;
  tell("the network changes");
}

// One fault of a machine; the calm that ends them is one of the choices.
void Scenario::hurt(Resident& resident) {
  const std::string& who = resident.host().address();
  SeamFaults& faults = resident.faults();
  sim::SimFiles& files = resident.host().files();
  switch (chance_.below(11)) {
    case 0:
      faults.file = 0.2;
      return tell(who + " has a failing disk");
    case 1:
      files.set_capacity(10'000 + chance_.below(50'000));
      return tell(who + " has a full disk");
    case 2:
      faults.connect = faults.accept = faults.abort = 0.3;
      return tell(who + " runs out of descriptors");
    case 3:
      faults.write = 0.2;
      return tell(who + " runs out of buffers");
    case 4:
      world_->set_local_time({2000 + static_cast<int>(chance_.below(40)), 2, 28, 23, 59, 58});
      return tell("the clocks jump");
    case 5:
    case 6: {
      const bool power_too = chance_.below(2) == 0;
      tell(who + (power_too ? " loses its power" : " is killed"));
      return resident.kill(power_too);
    }
    case 7: {
      if (!options_.allocation_faults) return;
      const std::uint64_t after = chance_.below(2000);
      allocation_gate.refuse_after(after, 1 + chance_.below(4));
      return tell(fmt::format("memory runs out in {} requests", after));
    }
    case 8: {
      const auto names = files.names(kShareFolder);
      if (names.empty()) return;
      const std::string& name = names[chance_.below(names.size())];
      const std::string path = std::string(kShareFolder) + "/" + name;
      tell(who + " loses or cuts " + name);
      if (chance_.below(2) == 0) return files.remove(path);
      return files.put(path, shared_bytes(name, files.content(path).size() / 2));
    }
    default:
      faults = {};
      files.set_capacity(static_cast<std::uint64_t>(-1));
      return tell(who + " is well again");
  }
}

// Names that are good, that lie, that say nothing, and servers that fail.
void Scenario::script_dns() {
  for (const auto& resident : residents_) {
    sim::SimDnsClient& dns = resident->host().dns();
    for (const std::string& address : addresses_) {
      switch (chance_.below(5)) {
        case 0:
          dns.script_name(address, std::string("<b>\x1b[2J\"\n\0x", 11));
          break;
        case 1:
          dns.script_name(address, std::string(253, 'n'), 4000);
          break;
        case 2:
          dns.script_silence(address);
          break;
        case 3:
          dns.script(address, kDnsServerFailed);
          break;
        default:
          dns.script_name(address, "host.example");
      }
    }
  }
}

void Scenario::end_all() {
  allocation_gate.refuse_at = 0;
  for (const auto& stranger : strangers_) stranger->leave();
  for (const auto& resident : residents_) {
    resident->faults() = {};
    const std::string fault = resident->end();
    if (fault.empty()) continue;
    result_.fault = resident->host().address() + ": " + fault;
    return;
  }
  world_->run_for(kKernelForgets_ms);
}

}  // namespace

ScenarioResult run_scenario(const ScenarioOptions& options) {
  const std::int64_t live_before = allocation_gate.live;
  ScenarioResult result = Scenario(options).run();
  const std::int64_t left = allocation_gate.live - live_before;
  // The result itself may hold one block, its text.
  if (result.fault.empty() && left != 0) {
    result.fault = fmt::format("{} blocks of memory were not given back", left);
  }
  return result;
}

}  // namespace velmora::simulator
