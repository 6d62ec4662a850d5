#include "share/file_numbers.h"

#include <string>
#include <unordered_map>
#include <utility>

namespace velmora {

OneBased<SharedFile> numbered(std::vector<SharedFile> found, const OneBased<SharedFile>& before) {
  std::unordered_map<std::string, std::size_t> old_numbers;
  old_numbers.reserve(before.upper_bound());
  for (std::size_t i = 1; i <= before.upper_bound(); ++i) {
    old_numbers.emplace(path_on_disk(before.at(i)), i);
  }
  OneBased<SharedFile> files(kMaxSharedFiles);
  files.resize(found.size());
  std::vector<bool> taken(found.size() + 1);
  std::vector<std::size_t> without_number;
  for (std::size_t i = 0; i < found.size(); ++i) {
    const auto old = old_numbers.find(path_on_disk(found[i]));
    if (old != old_numbers.end()) found[i].uploads = before.at(old->second).uploads;
    if (old == old_numbers.end() || !files.has(old->second) || taken[old->second]) {
      without_number.push_back(i);
      continue;
    }
    taken[old->second] = true;
    files.at(old->second) = std::move(found[i]);
  }
  std::size_t number = 1;
  for (const std::size_t i : without_number) {
    while (taken[number]) ++number;
    files.at(number++) = std::move(found[i]);
  }
  return files;
}

}  // namespace velmora
