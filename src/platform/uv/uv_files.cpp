#include "platform/uv/uv_files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "platform/uv/uv_directory.h"
#include "platform/uv/uv_file.h"

namespace velmora::uv {
namespace {

constexpr mode_t kForAll = 0644;
constexpr mode_t kForOwner = 0600;
constexpr int kTemporaryTries = 100;
constexpr std::size_t kReadBlock = std::size_t{64} << 10;

class UvListing : public DirectoryListing {
 public:
  // What kind of entries are listed: S_IFREG or S_IFDIR.
  UvListing(Descriptor folder, mode_t kind) : kind_(kind) {
    folder_.reset(fdopendir(folder.get()));
    if (folder_ == nullptr) throw PlatformError::from_errno(errno);
    static_cast<void>(folder.release());  // the stream owns it
  }

  std::optional<std::string> next() override {
    for (;;) {
      errno = 0;
      const dirent* entry = readdir(folder_.get());
      if (entry == nullptr) {
        if (errno != 0) throw PlatformError::from_errno(errno);
        return std::nullopt;
      }
      if (entry->d_name[0] != '.' && is_of_kind(*entry)) return entry->d_name;
    }
  }

 private:
  struct Close {
    void operator()(DIR* folder) const { closedir(folder); }
  };

  [[nodiscard]] bool is_of_kind(const dirent& entry) const {
    if (entry.d_type != DT_UNKNOWN) return static_cast<mode_t>(DTTOIF(entry.d_type)) == kind_;
    struct stat status {};
    return fstatat(dirfd(folder_.get()), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           (status.st_mode & S_IFMT) == kind_;
  }

  mode_t kind_;
  std::unique_ptr<DIR, Close> folder_;
};

class UvProfileLock : public ProfileLock {
 public:
  explicit UvProfileLock(Descriptor file) : file_(std::move(file)) {}

 private:
  Descriptor file_;  // closing it frees the lock
};

// A new file beside the one to be replaced; gone again unless it took that one's place.
class Temporary {
 public:
  explicit Temporary(int folder) : folder_(folder) {
    for (int i = 0; file_.get() < 0; ++i) {
      name_ = random_name();
      file_ = Descriptor(uninterrupted([&] {
        return openat(folder_, name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                      kForOwner);
      }));
      if (file_.get() >= 0) return;
      if (errno != EEXIST || i == kTemporaryTries) throw PlatformError::from_errno(errno);
    }
  }
  ~Temporary() {
    if (!name_.empty()) unlinkat(folder_, name_.c_str(), 0);
  }
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;

  void fill(std::string_view data) {
    write_all(file_.get(), data);
    checked([&] { return fsync(file_.get()); });
  }
  void replace(const std::string& target) {
    checked([&] { return renameat(folder_, name_.c_str(), folder_, target.c_str()); });
    name_.clear();
  }

 private:
  static std::string random_name() {
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz234567";
    std::array<unsigned char, 6> bytes{};
    checked([&] { return getrandom(bytes.data(), bytes.size(), 0); });
    std::string name = ".velmora-";
    for (const unsigned char byte : bytes) name += kLetters[byte % kLetters.size()];
    return name;
  }

  int folder_;
  std::string name_;
  Descriptor file_;
};

void rename_to_new(int folder, const std::string& from, const std::string& to) {
  const auto rename = [&] {
    return renameat2(folder, from.c_str(), folder, to.c_str(), RENAME_NOREPLACE);
  };
  if (uninterrupted(rename) == 0) return;
  if (errno != ENOSYS && errno != EINVAL) throw PlatformError::from_errno(errno);
  // A file system that cannot promise to replace nothing can still refuse a second link.
  checked([&] { return linkat(folder, from.c_str(), folder, to.c_str(), 0); });
  checked([&] { return unlinkat(folder, from.c_str(), 0); });
}

Descriptor opened_profile(const std::string& profile) {
  make_folders(profile);
  return open_folder(AT_FDCWD, profile);
}

}  // namespace

UvFiles::UvFiles(const std::string& profile) : profile_(opened_profile(profile)) {}

std::unique_ptr<File> UvFiles::open_for_reading(const std::string& path) {
  return std::make_unique<UvFile>(open_regular(profile_.get(), path, O_RDONLY));
}

std::unique_ptr<File> UvFiles::open_partial(const std::string& folder, const std::string& name) {
  const Descriptor directory = open_folder(profile_.get(), folder);
  check_entry(name);
  return std::make_unique<UvFile>(open_regular(directory.get(), name, O_RDWR | O_CREAT, kForAll));
}

void UvFiles::finish_partial(const std::string& folder, const std::string& from,
                             const std::string& to) {
  const Descriptor directory = open_folder(profile_.get(), folder);
  check_entry(from);
  check_entry(to);
  const Descriptor file = open_regular(directory.get(), from, O_RDONLY);
  checked([&] { return fsync(file.get()); });
  rename_to_new(directory.get(), from, to);
  sync_folder(directory.get());
}

void UvFiles::remove_partial(const std::string& folder, const std::string& name) {
  const Descriptor directory = open_folder(profile_.get(), folder);
  check_entry(name);
  try {
    stat_regular(directory.get(), name);
  } catch (const PlatformError& error) {
    if (error.code() != Errc::path_not_found) throw;
    return;
  }
  checked([&] { return unlinkat(directory.get(), name.c_str(), 0); });
}

std::unique_ptr<DirectoryListing> UvFiles::list(const std::string& folder) {
  return std::make_unique<UvListing>(open_folder(profile_.get(), folder), S_IFREG);
}

std::unique_ptr<DirectoryListing> UvFiles::list_folders(const std::string& folder) {
  return std::make_unique<UvListing>(open_folder(profile_.get(), folder), S_IFDIR);
}

std::uint64_t UvFiles::size(const std::string& path) {
  return static_cast<std::uint64_t>(stat_regular(profile_.get(), path).st_size);
}

// Reads to the end rather than to the size, which may change meanwhile.
std::string UvFiles::read_whole(const std::string& path, std::size_t most) {
  UvFile file(open_regular(profile_.get(), path, O_RDONLY));
  if (file.size() > most) throw PlatformError(Errc::out_of_memory);
  std::string data = file.read(0, most);
  for (;;) {
    const std::string block = file.read(data.size(), kReadBlock);
    if (block.empty()) return data;
    data += block;
    if (data.size() > most) throw PlatformError(Errc::out_of_memory);
  }
}

void UvFiles::save(const std::string& path, std::string_view data) {
  check_path(path);
  const SplitPath target = split_path(path);
  const Descriptor directory = open_folder(profile_.get(), target.folder);
  try {
    stat_regular(directory.get(), target.name);
  } catch (const PlatformError& error) {
    if (error.code() != Errc::path_not_found) throw;
  }
  Temporary temporary(directory.get());
  temporary.fill(data);
  temporary.replace(target.name);
  sync_folder(directory.get());
}

void UvFiles::append(const std::string& path, std::string_view data) {
  const Descriptor file =
      open_regular(profile_.get(), path, O_WRONLY | O_APPEND | O_CREAT, kForOwner);
  write_all(file.get(), data);
}

std::unique_ptr<ProfileLock> UvFiles::lock_profile() {
  Descriptor file = open_regular(profile_.get(), "lock", O_RDWR | O_CREAT, kForOwner);
  if (uninterrupted([&] { return flock(file.get(), LOCK_EX | LOCK_NB); }) == 0) {
    return std::make_unique<UvProfileLock>(std::move(file));
  }
  if (errno == EWOULDBLOCK) return nullptr;
  throw PlatformError::from_errno(errno);
}

}  // namespace velmora::uv
