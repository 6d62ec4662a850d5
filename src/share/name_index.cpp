#include "share/name_index.h"

#include <algorithm>
#include <limits>
#include <numeric>

#include "platform/error.h"

namespace velmora {
namespace {

constexpr std::size_t kGroup = 3;  // bytes
constexpr unsigned kListBits = 16;
constexpr std::size_t kLists = std::size_t{1} << kListBits;

std::size_t list_of(const char* group) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < kGroup; ++i)
    value = value << 8 | static_cast<unsigned char>(group[i]);
  return value * 0x9E3779B1U >> (32 - kListBits);
}

bool holds_all(std::string_view name, std::span<const std::string_view> words) {
  return std::all_of(words.begin(), words.end(), [name](std::string_view word) {
    return name.find(word) != std::string_view::npos;
  });
}

}  // namespace

void make_upper_case(std::string& text) {
  for (char& letter : text) {
    const bool small = letter >= 'a' && letter <= 'z';
    letter = static_cast<char>(letter - (small ? 'a' - 'A' : 0));
  }
}

NameIndex::NameIndex(const std::vector<std::string_view>& names) {
  if (names.size() > std::numeric_limits<std::uint16_t>::max()) {
    throw PlatformError(Errc::out_of_memory);
  }
  ends_.reserve(names.size());
  for (const std::string_view name : names) {
    text_ += name;
    ends_.push_back(text_.size());
  }
  make_upper_case(text_);
  if (names.size() >= kFewNames) list_groups();
}

std::string_view NameIndex::name(std::size_t number) const {
  const std::size_t start = number == 1 ? 0 : ends_[number - 2];
  return std::string_view(text_).substr(start, ends_[number - 1] - start);
}

// Counts how long each list becomes, then fills it; a name enters a list once.
void NameIndex::list_groups() {
  std::vector<std::uint16_t> last(kLists);  // the name that entered each list last
  const auto for_each_entry = [&](auto action) {
    std::fill(last.begin(), last.end(), std::uint16_t{0});
    for (std::size_t number = 1; number <= names(); ++number) {
      const std::string_view bytes = name(number);
      const auto entry = static_cast<std::uint16_t>(number);
      for (std::size_t at = 0; at + kGroup <= bytes.size(); ++at) {
        const std::size_t list = list_of(bytes.data() + at);
        if (last[list] == entry) continue;
        last[list] = entry;
        action(list, entry);
      }
    }
  };
  starts_.assign(kLists + 1, 0);
  for_each_entry([&](std::size_t list, std::uint16_t) { ++starts_[list + 1]; });
  std::partial_sum(starts_.begin(), starts_.end(), starts_.begin());
  lists_.resize(starts_.back());
  std::vector<std::uint32_t> next(starts_.begin(), starts_.end() - 1);
  for_each_entry([&](std::size_t list, std::uint16_t entry) { lists_[next[list]++] = entry; });
}

std::span<const std::uint16_t> NameIndex::holders(std::string_view group) const {
  const std::size_t list = list_of(group.data());
  return std::span(lists_).subspan(starts_[list], starts_[list + 1] - starts_[list]);
}

// False when no word is long enough to have a group.
bool NameIndex::rarest_holders(std::span<const std::string_view> words,
                               std::span<const std::uint16_t>& rarest) const {
  bool found = false;
  for (const std::string_view word : words) {
    for (std::size_t at = 0; at + kGroup <= word.size(); ++at) {
      const auto list = holders(word.substr(at, kGroup));
      if (found && list.size() >= rarest.size()) continue;
      rarest = list;
      found = true;
    }
  }
  return found;
}

NameMatches NameIndex::find(std::span<const std::string_view> words, double limit) const {
  NameMatches matches;
  const auto look_at = [&](std::size_t number) {
    ++matches.names_read;
    if (holds_all(name(number), words)) matches.names.push_back(number);
    return limit > static_cast<double>(matches.names.size());
  };
  std::span<const std::uint16_t> candidates;
  if (limit > 0 && !starts_.empty() && rarest_holders(words, candidates)) {
    for (const std::uint16_t number : candidates) {
      if (!look_at(number)) break;
    }
    return matches;
  }
  for (std::size_t number = 1; number <= names(); ++number) {
    if (!look_at(number)) break;
  }
  return matches;
}

}  // namespace velmora
