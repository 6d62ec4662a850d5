// A hash table of numbers above 0, such as those of an array's records: whoever uses it hashes and
// compares the records. A search looks at a bounded number of places, so that names chosen to
// collide cost no more than others; what has no place is not found again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace velmora {

class NumberTable {
 public:
  static constexpr std::size_t kMostSteps = 64;

  // The number for which `same(number)` holds among those entered with this hash; 0: none.
  template <class Same>
  [[nodiscard]] std::size_t find(std::uint32_t hash, Same same) const {
    for (std::size_t step = 0; step < kMostSteps && step < places_.size(); ++step) {
      const Place& place = places_[(hash + step) & (places_.size() - 1)];
      if (place.number == 0) return 0;
      if (place.hash == hash && same(place.number)) return place.number;
    }
    return 0;
  }

  // Makes room for one more; what is entered next needs no memory.
  void reserve_one();
  void enter(std::uint32_t hash, std::size_t number);

 private:
  struct Place {
    std::uint32_t hash = 0;
    std::uint32_t number = 0;  // 0: free
  };

  std::vector<Place> places_;  // a power of two of them, at most half of them taken
  std::size_t entered_ = 0;
};

}  // namespace velmora
