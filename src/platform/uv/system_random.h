// The kernel's random bytes, from getrandom(2). It keeps none and waits for nothing but the first
// ones after the machine's start.
#pragma once

#include "platform/random_source.h"

namespace velmora::uv {

class SystemRandom : public RandomSource {
 public:
  void fill(std::span<char> bytes) override;
};

}  // namespace velmora::uv
