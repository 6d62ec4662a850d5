#include "share/shared_index.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace velmora {

void SharedIndex::replace(OneBased<SharedFile> files) {
  OneBased<SearchText> names(kMaxSharedFiles);
  names.resize(files.upper_bound());
  for (std::size_t number = 1; number <= files.upper_bound(); ++number) {
    names.at(number) = SearchText(files.at(number).name);
  }
  shared_files_ = std::move(files);
  names_ = std::move(names);
}

bool SharedIndex::matches(std::size_t file_number, const std::vector<SearchText>& words) const {
  const SearchText& name = names_.at(file_number);
  return std::all_of(words.begin(), words.end(),
                     [&name](const SearchText& word) { return name.holds(word); });
}

void SharedIndex::count_upload(std::size_t file_number) {
  std::int16_t& uploads = shared_files_.at(file_number).uploads;
  if (uploads < std::numeric_limits<std::int16_t>::max()) ++uploads;
}

}  // namespace velmora
