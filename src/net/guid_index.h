// Where in a ring of identifiers each one stands: a small hash table with open addressing over the
// ring's positions. It knows no routes and holds no identifier itself; the ring tells it what
// enters and what leaves, and compares. Identifiers entered are different from each other.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace velmora {

class GuidIndex {
 public:
  // Twice as many places as entries, so that a search ends after a few steps.
  static constexpr std::size_t kPlaces = 1024;

  GuidIndex() { places_.fill(kEmpty); }

  // The position for which `matches(position)` holds among those entered with this hash; -1: none.
  template <class Matches>
  [[nodiscard]] int find(std::uint32_t hash, Matches matches) const {
    for (std::size_t place = hash % kPlaces;; place = (place + 1) % kPlaces) {
      const std::int16_t position = places_[place];
      if (position == kEmpty || matches(position)) return position;
    }
  }

  // At most kPlaces / 2 positions may be in it at a time.
  void enter(std::uint32_t hash, std::size_t position);
  // Takes out a position that was entered with this hash.
  void remove(std::uint32_t hash, std::size_t position);

 private:
  static constexpr std::int16_t kEmpty = -1;

  std::array<std::int16_t, kPlaces> places_;
  std::array<std::uint16_t, kPlaces> homes_{};  // the place where each entry's search starts
};

}  // namespace velmora
