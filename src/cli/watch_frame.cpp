#include "cli/watch_frame.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/visible_text.h"

namespace velmora::cli {
namespace {

using Lines = std::vector<std::string>;

// The counters side by side, in columns of one width.
Lines counter_lines(const WatchState& state, std::size_t width) {
  std::size_t widest = 1;
  Lines cells;
  for (const auto& [name, value] : state.counters) {
    cells.push_back(fmt::format("{} {}", name, value));
    widest = std::max(widest, columns(cells.back()));
  }
  constexpr std::size_t kGap = 3;
  const std::size_t across = std::max<std::size_t>((width + kGap) / (widest + kGap), 1);
  Lines lines;
  for (std::size_t at = 0; at < cells.size(); ++at) {
    if (at % across == 0) {
      lines.emplace_back();
    } else {
      lines.back().append(kGap, ' ');
    }
    const bool last = at + 1 == cells.size() || (at + 1) % across == 0;
    lines.back() += last ? cells[at] : padded(cells[at], widest);
  }
  return lines;
}

// Deals `space` lines to sections of these sizes: nobody gets more than it needs, and what one
// leaves goes to the others.
std::vector<std::size_t> shares(const std::vector<WatchSection>& sections, std::size_t space) {
  std::vector<std::size_t> given(sections.size());
  for (bool more = true; more && space > 0;) {
    more = false;
    for (std::size_t at = 0; at < sections.size() && space > 0; ++at) {
      if (given[at] == sections[at].lines.size()) continue;
      ++given[at];
      --space;
      more = true;
    }
  }
  return given;
}

// What the sections need to tell anything; on a lower screen the counters give way.
std::size_t least_lines(const std::vector<WatchSection>& sections) {
  std::size_t lines = 0;
  for (const WatchSection& section : sections) {
    lines += std::min<std::size_t>(section.lines.size(), 2);
  }
  return lines;
}

void append_section(Lines& out, const Lines& lines, std::size_t space) {
  const bool cut = lines.size() > space;
  const std::size_t shown = cut && space > 0 ? space - 1 : std::min(lines.size(), space);
  out.insert(out.end(), lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(shown));
  if (cut && space > 0) out.push_back(fmt::format("... {} more", lines.size() - shown));
}

}  // namespace

std::vector<std::string> watch_frame(const WatchState& state, std::size_t width,
                                     std::size_t height) {
  const Lines counters = counter_lines(state, width);
  Lines out = {state.title, state.status};
  // a blank line and a heading go with every section and with the counters
  std::size_t fixed = out.size() + 2 * state.sections.size();
  const bool with_counters =
      height == 0 || height >= fixed + least_lines(state.sections) + 2 + counters.size();
  if (with_counters) fixed += 2 + counters.size();
  std::size_t room = height > fixed ? height - fixed : 0;
  if (height == 0) room = static_cast<std::size_t>(-1);
  const auto given = shares(state.sections, room);
  for (std::size_t at = 0; at < given.size(); ++at) {
    out.emplace_back();
    out.push_back(state.sections[at].heading);
    append_section(out, state.sections[at].lines, given[at]);
  }
  if (with_counters) {
    out.emplace_back();
    out.emplace_back("Counters");
    out.insert(out.end(), counters.begin(), counters.end());
  }
  if (height > 0 && out.size() > height) out.resize(height);
  for (std::string& line : out) line = cut_to(line, width);
  return out;
}

}  // namespace velmora::cli
