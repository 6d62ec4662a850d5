#include "share/name_patterns.h"

#include <algorithm>

#include "share/name_index.h"

namespace velmora {
namespace {

std::string_view without_blanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// When the rest does not fit, the last star takes one byte more; an earlier one need not.
bool fits(std::string_view pattern, std::string_view name) {
  constexpr auto kNone = std::string_view::npos;
  std::size_t at = 0;
  std::size_t star = kNone;
  std::size_t star_end = 0;
  for (std::size_t i = 0; i < name.size();) {
    if (at < pattern.size() && pattern[at] == '*') {
      star = at++;
      star_end = i;
    } else if (at < pattern.size() && (pattern[at] == '?' || pattern[at] == name[i])) {
      ++at;
      ++i;
    } else if (star != kNone) {
      at = star + 1;
      i = ++star_end;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', at) == kNone;
}

}  // namespace

NamePatterns::NamePatterns(std::string_view text) {
  while (!text.empty() && patterns_.size() < kMaxNamePatterns) {
    const std::size_t end = std::min(text.find(';'), text.size());
    const std::string_view pattern = without_blanks(text.substr(0, end));
    if (!pattern.empty()) make_upper_case(patterns_.emplace_back(pattern));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

bool NamePatterns::fit(std::string_view name) const {
  std::string upper(name);
  make_upper_case(upper);
  return std::any_of(patterns_.begin(), patterns_.end(),
                     [&](const std::string& pattern) { return fits(pattern, upper); });
}

}  // namespace velmora
