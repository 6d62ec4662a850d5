// Everything that chance decides in a simulated world, drawn from one seed. It uses no library
// distribution: those differ between libraries, and a seed must replay everywhere.
#pragma once

#include <cstdint>
#include <random>

namespace velmora::sim {

class Chance {
 public:
  explicit Chance(std::uint64_t seed) : engine_(seed) {}

  bool happens(double probability) {
    if (probability <= 0) return false;
    return static_cast<double>(engine_() >> 11) * 0x1p-53 < probability;
  }
  // 0 to limit - 1; 0 for a limit of 0.
  std::uint64_t below(std::uint64_t limit) { return limit == 0 ? 0 : engine_() % limit; }

 private:
  std::mt19937_64 engine_;
};

}  // namespace velmora::sim
