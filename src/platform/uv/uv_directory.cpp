#include "platform/uv/uv_directory.h"

#include <fcntl.h>

#include <filesystem>
#include <system_error>

namespace velmora::uv {
namespace {

void require_regular(const struct stat& status) {
  if (S_ISREG(status.st_mode)) return;
  if (S_ISDIR(status.st_mode)) throw PlatformError::from_errno(EISDIR);
  if (S_ISLNK(status.st_mode)) throw PlatformError::from_errno(ELOOP);
  throw PlatformError(Errc::system, "Not a regular file");
}

}  // namespace

void check_path(const std::string& path) {
  if (path.find('\0') != std::string::npos) throw PlatformError(Errc::bad_file_name);
}

void check_entry(const std::string& name) {
  check_path(name);
  if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos) {
    throw PlatformError(Errc::bad_file_name);
  }
}

Descriptor open_folder(int base, const std::string& path) {
  check_path(path);
  return Descriptor(
      checked([&] { return openat(base, path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
}

Descriptor open_regular(int base, const std::string& path, int flags, mode_t mode) {
  check_path(path);
  Descriptor file(checked([&] {
    return openat(base, path.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, mode);
  }));
  struct stat status {};
  checked([&] { return fstat(file.get(), &status); });
  require_regular(status);
  return file;
}

struct stat stat_regular(int base, const std::string& path) {
  check_path(path);
  struct stat status {};
  checked([&] { return fstatat(base, path.c_str(), &status, AT_SYMLINK_NOFOLLOW); });
  require_regular(status);
  return status;
}

void make_folders(const std::string& path) {
  check_path(path);
  std::filesystem::path made;
  for (const auto& part : std::filesystem::path(path)) {
    made /= part;
    if (mkdir(made.c_str(), S_IRWXU) == 0 || errno == EEXIST) continue;
    // A folder that is there may refuse to be made for another reason (a read-only disk).
    std::error_code error;
    const int reason = errno;
    if (!std::filesystem::is_directory(made, error)) throw PlatformError::from_errno(reason);
  }
}

// A file system that cannot sync folders says EINVAL; it keeps them in order by itself.
void sync_folder(int folder) {
  if (uninterrupted([&] { return fsync(folder); }) == 0 || errno == EINVAL) return;
  throw PlatformError::from_errno(errno);
}

SplitPath split_path(const std::string& path) {
  if (path.empty()) throw PlatformError(Errc::path_not_found);
  const auto slash = path.rfind('/');
  SplitPath split{slash == std::string::npos ? "." : path.substr(0, slash + 1),
                  slash == std::string::npos ? path : path.substr(slash + 1)};
  check_entry(split.name);
  return split;
}

}  // namespace velmora::uv
