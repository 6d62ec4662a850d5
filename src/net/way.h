// Which way a descriptor came, so that its answer finds back: a connection with its generation, by
// which a later connection in the same slot is told apart, or one of this servent's own searches.
// Plain data; whether the connection still stands is asked of the connections.
#pragma once

#include <cstddef>
#include <cstdint>

namespace velmora {

struct Way {
  std::size_t connection = 0;  // 0: no connection, the descriptor is this servent's own
  std::uint64_t generation = 0;
  std::int16_t search = 0;  // the search's number, 1 to 3, of an own query
};

}  // namespace velmora
