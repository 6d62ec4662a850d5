// What `watch` shows, laid out for a screen of a given size. It only builds the lines.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace velmora::cli {

struct WatchSection {
  std::string heading;
  std::vector<std::string> lines;
};

struct WatchState {
  std::string title;
  std::string status;
  std::vector<WatchSection> sections;
  std::vector<std::pair<std::string, std::string>> counters;  // name, value
};

// At most `height` lines (0: as many as it takes) of at most `width` columns. The texts of the
// state are visible already. Sections that do not fit are cut and say how much more there is.
std::vector<std::string> watch_frame(const WatchState& state, std::size_t width,
                                     std::size_t height);

}  // namespace velmora::cli
