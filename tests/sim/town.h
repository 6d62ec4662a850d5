// Fifty servents on a random graph, with people who connect, press "More", search and leave now and
// then, strangers that speak the protocol badly, and a network with faults: all from one seed.
// Nothing is expected here; the tests compare what came of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "app/servent.h"
#include "network_model.h"
#include "platform/sim/sim_world.h"

namespace velmora::model {

class Chance {
 public:
  explicit Chance(std::uint64_t seed) : engine_(seed) {}
  std::size_t below(std::size_t limit) { return static_cast<std::size_t>(engine_() % limit); }
  bool one_in(std::size_t n) { return below(n) == 0; }
  template <class T>
  const T& pick(const std::vector<T>& from) {
    return from[below(from.size())];
  }

 private:
  std::mt19937_64 engine_;
};

// One servent and the person before it.
struct Resident {
  std::string address;
  sim::SimHost* host = nullptr;
  std::unique_ptr<Servent> servent;
  std::vector<std::string> friends;
  std::size_t max_in = 20;
  std::vector<SharedName> files;
  std::vector<PersonAct> acts;
  Lines log;
};

class Town {
 public:
  static constexpr std::size_t kResidents = 50;
  static constexpr unsigned kTtl = 4;

  explicit Town(std::uint64_t seed);

  // People and strangers are about.
  void live(std::int64_t seconds);
  // Nobody does anything.
  void rest(std::int64_t seconds) { world_.run_for(seconds * 1000); }

  [[nodiscard]] const sim::SimWorld& world() const { return world_; }
  [[nodiscard]] const std::vector<Resident>& residents() const { return residents_; }
  // Replayed up to now.
  [[nodiscard]] NetworkModel model_of(const Resident& resident) const;

 private:
  struct Stranger {
    std::string address;
    std::unique_ptr<sim::RawPeer> peer;
  };

  void found();
  void acquaint();
  void move_in(Resident& resident);
  void person(Resident& resident);
  void stranger(Stranger& stranger);
  void host_strangers();
  void talk(sim::RawPeer& peer);
  std::string noise();
  std::string descriptor(unsigned function, std::size_t length);
  std::string words(std::size_t most);

  Chance chance_;
  sim::SimWorld world_;
  std::vector<Resident> residents_;
  std::vector<Stranger> strangers_;
  std::vector<sim::RawPeer*> guests_;  // of the strangers that listen; owned by the world
  std::vector<std::string> heard_;     // identifiers that strangers have used
};

}  // namespace velmora::model
