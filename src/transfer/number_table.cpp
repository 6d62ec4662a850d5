#include "transfer/number_table.h"

#include <algorithm>
#include <utility>

namespace velmora {

void NumberTable::reserve_one() {
  if ((entered_ + 1) * 2 <= places_.size()) return;
  const std::vector<Place> old =
      std::exchange(places_, std::vector<Place>(std::max<std::size_t>(64, places_.size() * 2)));
  entered_ = 0;
  for (const Place& place : old) {
    if (place.number != 0) enter(place.hash, place.number);
  }
}

void NumberTable::enter(std::uint32_t hash, std::size_t number) {
  for (std::size_t step = 0; step < kMostSteps && step < places_.size(); ++step) {
    Place& place = places_[(hash + step) & (places_.size() - 1)];
    if (place.number != 0) continue;
    place = {hash, static_cast<std::uint32_t>(number)};
    ++entered_;
    return;
  }
}

}  // namespace velmora
