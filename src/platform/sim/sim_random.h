// The random bytes of one simulated host, drawn from the world's seed and the host's address: the
// same in every run, others on every host, and no draw moves what chance decides elsewhere.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/random_source.h"
#include "platform/sim/sim_chance.h"

namespace velmora::sim {

class SimRandom : public RandomSource {
 public:
  SimRandom(std::uint64_t seed, std::string_view address) : chance_(mixed(seed, address)) {}

  void fill(std::span<char> bytes) override {
    for (char& byte : bytes) byte = static_cast<char>(chance_.below(256));
  }

 private:
  static std::uint64_t mixed(std::uint64_t seed, std::string_view address) {
    for (const char c : address) seed = (seed ^ static_cast<unsigned char>(c)) * 1099511628211U;
    return seed;
  }

  Chance chance_;
};

}  // namespace velmora::sim
