#include "simulator/watched_files.h"

#include <array>
#include <cerrno>
#include <utility>

#include "platform/error.h"

namespace velmora::simulator {
namespace {

int some_error(Seam& seam) {
  constexpr std::array<int, 4> kErrors = {EIO, ENOSPC, EMFILE, EACCES};
  return kErrors.at(seam.chance.below(kErrors.size()));
}

void may_fail(Seam& seam) {
  if (seam.chance.happens(seam.faults.file)) throw PlatformError::from_errno(some_error(seam));
}

class WatchedFile : public File {
 public:
  WatchedFile(Seam& seam, std::unique_ptr<File> file) : seam_(seam), file_(std::move(file)) {
    ++seam_.held.files;
  }
  ~WatchedFile() override {
    const InMachine side;
    file_.reset();
    --seam_.held.files;
  }
  WatchedFile(const WatchedFile&) = delete;
  WatchedFile& operator=(const WatchedFile&) = delete;

  [[nodiscard]] std::uint64_t size() const override {
    const InMachine side;
    may_fail(seam_);
    return file_->size();
  }
  void read_into(std::string& data, std::uint64_t offset, std::size_t most) override {
    machine_needs_memory();
    const InMachine side;
    may_fail(seam_);
    file_->read_into(data, offset, most);
  }
  // A failing write may have written its beginning.
  void write(std::uint64_t offset, std::string_view data) override {
    const InMachine side;
    if (seam_.chance.happens(seam_.faults.file)) {
      file_->write(offset, data.substr(0, seam_.chance.below(data.size() + 1)));
      throw PlatformError::from_errno(some_error(seam_));
    }
    std::string bytes(data);
    if (seam_.strikes(Plant::file)) bytes.back() ^= 1;
    file_->write(offset, bytes);
  }
  void truncate(std::uint64_t size) override {
    const InMachine side;
    may_fail(seam_);
    file_->truncate(size);
  }
  void sync() override {
    const InMachine side;
    may_fail(seam_);
    file_->sync();
  }

 private:
  Seam& seam_;
  std::unique_ptr<File> file_;
};

class WatchedListing : public DirectoryListing {
 public:
  WatchedListing(Seam& seam, std::unique_ptr<DirectoryListing> listing)
      : seam_(seam), listing_(std::move(listing)) {
    ++seam_.held.listings;
  }
  ~WatchedListing() override {
    const InMachine side;
    listing_.reset();
    --seam_.held.listings;
  }
  WatchedListing(const WatchedListing&) = delete;
  WatchedListing& operator=(const WatchedListing&) = delete;

  std::optional<std::string> next() override {
    machine_needs_memory();
    const InMachine side;
    may_fail(seam_);
    return listing_->next();
  }

 private:
  Seam& seam_;
  std::unique_ptr<DirectoryListing> listing_;
};

class WatchedLock : public ProfileLock {
 public:
  WatchedLock(Seam& seam, std::unique_ptr<ProfileLock> lock) : seam_(seam), lock_(std::move(lock)) {
    ++seam_.held.locks;
  }
  ~WatchedLock() override {
    const InMachine side;
    lock_.reset();
    --seam_.held.locks;
  }
  WatchedLock(const WatchedLock&) = delete;
  WatchedLock& operator=(const WatchedLock&) = delete;

 private:
  Seam& seam_;
  std::unique_ptr<ProfileLock> lock_;
};

}  // namespace

std::unique_ptr<File> WatchedFiles::open_for_reading(const std::string& path) {
  machine_needs_memory();
  const InMachine side;
  may_fail(seam_);
  return std::make_unique<WatchedFile>(seam_, seam_.machine.files.open_for_reading(path));
}

std::unique_ptr<File> WatchedFiles::open_partial(const std::string& folder,
                                                 const std::string& name) {
  machine_needs_memory();
  const InMachine side;
  may_fail(seam_);
  return std::make_unique<WatchedFile>(seam_, seam_.machine.files.open_partial(folder, name));
}

void WatchedFiles::finish_partial(const std::string& folder, const std::string& from,
                                  const std::string& to) {
  machine_needs_memory();
  const InMachine side;
  may_fail(seam_);
  seam_.machine.files.finish_partial(folder, from, to);
  seam_.watch.on_finished(folder, to);
}

void WatchedFiles::remove_partial(const std::string& folder, const std::string& name) {
  machine_needs_memory();
  const InMachine side;
  may_fail(seam_);
  seam_.machine.files.remove_partial(folder, name);
}

std::unique_ptr<DirectoryListing> WatchedFiles::list(const std::string& folder) {
  machine_needs_memory();
  const InMachine side;
  may_fail(seam_);
  return std::make_unique<WatchedListing>(seam_, seam_.machine.files.list(folder));
}

std::unique_ptr<DirectoryListing> WatchedFiles::list_folders(const std::string& folder) {
  machine_needs_memory();
  const InMachine side;
  may_fail(seam_);
  return std::make_unique<WatchedListing>(seam_, seam_.machine.files.list_folders(folder));
}

std::uint64_t WatchedFiles::size(const std::string& path) {
  const InMachine side;
  may_fail(seam_);
  return seam_.machine.files.size(path);
}

std::string WatchedFiles::read_whole(const std::string& path, std::size_t most) {
  machine_needs_memory();
  const InMachine side;
  may_fail(seam_);
  std::string data = seam_.machine.files.read_whole(path, most);
  seam_.watch.on_loaded(path, data);
  return data;
}

void WatchedFiles::save(const std::string& path, std::string_view data) {
  machine_needs_memory();
  const InMachine side;
  may_fail(seam_);
  seam_.machine.files.save(path, data);
  seam_.watch.on_saved(path, data);
}

void WatchedFiles::append(const std::string& path, std::string_view data) {
  machine_needs_memory();
  const InMachine side;
  if (seam_.chance.happens(seam_.faults.file)) {
    seam_.machine.files.append(path, data.substr(0, seam_.chance.below(data.size() + 1)));
    throw PlatformError::from_errno(some_error(seam_));
  }
  seam_.machine.files.append(path, data);
}

std::unique_ptr<ProfileLock> WatchedFiles::lock_profile() {
  machine_needs_memory();
  const InMachine side;
  auto lock = seam_.machine.files.lock_profile();
  if (!lock) return nullptr;
  return std::make_unique<WatchedLock>(seam_, std::move(lock));
}

}  // namespace velmora::simulator
