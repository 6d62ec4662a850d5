// Makes the identifiers of the descriptors that this servent originates. It remembers none; whether
// one repeats is the routing table's to find.
#pragma once

#include <string>
#include <string_view>

#include "platform/behaviour.h"
#include "platform/event_loop.h"
#include "platform/random_source.h"

namespace velmora {

// 16 bytes of which nobody has the like, with the two that say so to others: byte 8 is 255, byte 15
// is 0. Raises the source's error.
std::string random_guid(RandomSource& random);

class Identifiers {
 public:
  // None is owned.
  Identifiers(const EventLoop& loop, RandomSource& random, const Behaviour& behaviour = kClassic)
      : loop_(loop), random_(random), behaviour_(behaviour) {}

  // Raises the random source's error.
  [[nodiscard]] std::string next() const;

  // One that this servent makes once only, even where classic ones come again after a minute: made
  // of the maker's mark (8 bytes at most, its own on this servent) and the clock.
  [[nodiscard]] std::string once(std::string_view mark) const;

 private:
  const EventLoop& loop_;
  RandomSource& random_;
  const Behaviour& behaviour_;
};

}  // namespace velmora
