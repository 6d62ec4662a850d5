#include "platform/sim/sim_disk.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/error.h"

namespace velmora::sim {

std::string normal_path(const std::string& path) {
  std::string normal;
  for (std::size_t at = 0; at < path.size();) {
    const std::size_t end = std::min(path.find('/', at), path.size());
    const std::string part = path.substr(at, end - at);
    if (!part.empty() && part != ".") {
      if (!normal.empty() || path.front() == '/') normal += '/';
      normal += part;
    }
    at = end + 1;
  }
  return normal.empty() && path.starts_with('/') ? "/" : normal;
}

std::string folder_of(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return "";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string name_of(const std::string& path) { return path.substr(path.rfind('/') + 1); }

void StoredFile::make_last() {
  synced = content;
  lasts = true;
}

void Disk::check_fault() {
  if (faults_left == 0) return;
  --faults_left;
  throw PlatformError::from_errno(fault);
}

void Disk::check_folder(const std::string& path) const {
  const std::string normal = normal_path(path);
  if (files.contains(normal)) throw PlatformError::from_errno(ENOTDIR);
  if (path.empty() || !folders.contains(normal)) throw PlatformError(Errc::path_not_found);
}

void Disk::check_place(const std::string& path) const {
  if (folders.contains(path)) throw PlatformError::from_errno(path.empty() ? ENOENT : EISDIR);
  if (files.contains(folder_of(path))) throw PlatformError::from_errno(ENOTDIR);
  if (!folders.contains(folder_of(path))) throw PlatformError(Errc::path_not_found);
}

std::shared_ptr<StoredFile> Disk::existing(const std::string& path) const {
  const auto found = files.find(path);
  if (found != files.end()) return found->second;
  check_place(path);
  throw PlatformError(Errc::path_not_found);
}

std::shared_ptr<StoredFile> Disk::existing_or_new(const std::string& path) {
  const auto found = files.find(path);
  if (found != files.end()) return found->second;
  check_place(path);
  return make(path);
}

void Disk::write(StoredFile& file, std::uint64_t offset, std::string_view data) {
  if (offset > file.content.size()) throw PlatformError(Errc::input_past_end);
  const std::uint64_t over_old = std::min<std::uint64_t>(file.content.size() - offset, data.size());
  const std::uint64_t fits = std::min<std::uint64_t>(data.size() - over_old, room()) + over_old;
  file.content.replace(offset, over_old, data.substr(0, fits));
  if (fits < data.size()) throw PlatformError(Errc::disk_full);
}

void Disk::resize(StoredFile& file, std::uint64_t size) {
  const std::uint64_t old = file.content.size();
  if (size > old && size - old > room()) throw PlatformError(Errc::disk_full);
  file.content.resize(size);
}

void Disk::replace(const std::string& path, std::string data) {
  const auto old = files.find(path);
  const auto file = std::make_shared<StoredFile>();
  file->order = old == files.end() ? made_++ : old->second->order;
  file->content = std::move(data);
  file->make_last();
  files[path] = file;
}

void Disk::make_folder(const std::string& path) {
  folders.insert(path);
  if (!path.empty() && path != "/") make_folder(folder_of(path));
}

void Disk::crash() {
  ++crashes;
  locked = false;
  std::erase_if(files, [](const auto& entry) { return !entry.second->lasts; });
  for (auto& [path, file] : files) file->content = file->synced;
}

std::uint64_t Disk::room() const {
  if (capacity == std::numeric_limits<std::uint64_t>::max()) return capacity;
  std::uint64_t used = 0;
  for (const auto& [path, file] : files) used += file->content.size();
  return capacity - std::min(capacity, used);
}

std::vector<std::string> Disk::names_in(const std::string& folder) const {
  std::vector<std::pair<std::uint64_t, std::string>> found;
  for (const auto& [path, file] : files) {
    if (folder_of(path) == folder) found.emplace_back(file->order, name_of(path));
  }
  std::sort(found.begin(), found.end());
  std::vector<std::string> names;
  names.reserve(found.size());
  for (auto& [order, name] : found) names.push_back(std::move(name));
  return names;
}

std::vector<std::string> Disk::folders_in(const std::string& folder) const {
  std::vector<std::string> names;
  for (const std::string& path : folders) {
    if (path != folder && folder_of(path) == folder) names.push_back(name_of(path));
  }
  return names;
}

std::shared_ptr<StoredFile> Disk::make(const std::string& path) {
  auto file = std::make_shared<StoredFile>();
  file->order = made_++;
  files[path] = file;
  return file;
}

}  // namespace velmora::sim
