// Where bytes that nobody can guess come from: the machine's own source, or a simulated world's
// seed. It makes no numbers or identifiers of them.
#pragma once

#include <span>

#include "platform/error.h"

namespace velmora {

class RandomSource {
 public:
  virtual ~RandomSource() = default;
  // Fills all of them. Raises the system's error when it has none to give.
  virtual void fill(std::span<char> bytes) = 0;
};

// What a platform has that was made without one.
class NoRandomSource : public RandomSource {
 public:
  void fill(std::span<char>) override {
    throw PlatformError(Errc::system, "No source of random bytes");
  }
};

inline RandomSource& no_random_source() {
  static NoRandomSource none;  // it has no state
  return none;
}

}  // namespace velmora
