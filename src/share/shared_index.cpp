#include "share/shared_index.h"

#include <limits>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora {

void SharedIndex::replace(OneBased<SharedFile> files) {
  std::vector<std::string_view> names;
  names.reserve(files.upper_bound());
  for (const SharedFile& file : files) names.emplace_back(file.name);
  names_ = NameIndex(names);
  shared_files_ = std::move(files);
}

void SharedIndex::count_upload(std::size_t file_number) {
  std::int16_t& uploads = shared_files_.at(file_number).uploads;
  if (uploads < std::numeric_limits<std::int16_t>::max()) ++uploads;
}

}  // namespace velmora
