#include "net/guid_index.h"

namespace velmora {

void GuidIndex::enter(std::uint32_t hash, std::size_t position) {
  std::size_t place = hash % kPlaces;
  const auto home = static_cast<std::uint16_t>(place);
  while (places_[place] != kEmpty) place = (place + 1) % kPlaces;
  places_[place] = static_cast<std::int16_t>(position);
  homes_[place] = home;
}

// Moves up what a search could no longer reach over the gap.
void GuidIndex::remove(std::uint32_t hash, std::size_t position) {
  std::size_t gap = hash % kPlaces;
  while (places_[gap] != static_cast<std::int16_t>(position)) gap = (gap + 1) % kPlaces;
  for (std::size_t next = (gap + 1) % kPlaces; places_[next] != kEmpty;
       next = (next + 1) % kPlaces) {
    const std::size_t steps = (next - homes_[next]) % kPlaces;
    if (steps < (next - gap) % kPlaces) continue;
    places_[gap] = places_[next];
    homes_[gap] = homes_[next];
    gap = next;
  }
  places_[gap] = kEmpty;
}

}  // namespace velmora
