// How far searches reach: an overlay of servents on a seeded random graph, each with files that
// nobody else has, in which one after the other searches for a file of another. It counts and
// judges nothing. The same options give the same figures.
#pragma once

#include <cstddef>
#include <cstdint>

namespace velmora::simulator {

struct TrialOptions {
  std::uint64_t seed = 1;
  std::size_t servents = 200;  // at most 200
  std::size_t degree = 4;      // connections of each servent; servents times degree is even
  std::size_t files = 20;      // of each servent
  std::size_t searches = 300;
  int ttl = 7;
  // The first so many of a random order run the profile Overlay, the others Classic.
  std::size_t overlay = 0;
};

struct TrialResult {
  std::size_t searches = 0;
  std::size_t found = 0;
  double messages = 0;          // queries and hits received anywhere, for each search
  double first_hit_ms = 0;      // median of those found; 0 when none was
  std::size_t connections = 0;  // that stood at the end of the last network
  std::size_t misread = 0;      // descriptors of an unknown type or a wrong length
  std::size_t wrong = 0;        // results that name no file that was searched for
};

TrialResult run_search_trial(const TrialOptions& options);

}  // namespace velmora::simulator
