#include "platform/sim/sim_files.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/error.h"
#include "platform/sim/sim_disk.h"

namespace velmora::sim {
namespace {

// One directory entry, or the error that a file system raises for the name.
std::string entry_path(const Disk& disk, const std::string& folder, const std::string& name) {
  if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos ||
      name.find('\0') != std::string::npos) {
    throw PlatformError(Errc::bad_file_name);
  }
  disk.check_folder(folder);
  const std::string inside = normal_path(folder);
  return inside.empty() ? name : (inside == "/" ? inside : inside + "/") + name;
}

class SimFile : public File {
 public:
  SimFile(std::shared_ptr<Disk> disk, std::shared_ptr<StoredFile> file, bool writable)
      : disk_(std::move(disk)),
        file_(std::move(file)),
        writable_(writable),
        crashes_(disk_->crashes) {}

  [[nodiscard]] std::uint64_t size() const override {
    check();
    return file_->content.size();
  }
  void read_into(std::string& data, std::uint64_t offset, std::size_t most) override {
    check();
    data.assign(file_->content, std::min<std::uint64_t>(offset, file_->content.size()), most);
  }
  void write(std::uint64_t offset, std::string_view data) override {
    check_writable();
    disk_->write(*file_, offset, data);
  }
  void truncate(std::uint64_t size) override {
    check_writable();
    disk_->resize(*file_, size);
  }
  void sync() override {
    check();
    file_->make_last();
  }

 private:
  void check() const {
    if (crashes_ != disk_->crashes) throw PlatformError::from_errno(EBADF);
    disk_->check_fault();
  }
  void check_writable() const {
    check();
    if (!writable_) throw PlatformError::from_errno(EBADF);
  }

  std::shared_ptr<Disk> disk_;
  std::shared_ptr<StoredFile> file_;
  bool writable_;
  int crashes_;
};

class SimListing : public DirectoryListing {
 public:
  SimListing(std::shared_ptr<Disk> disk, std::vector<std::string> names)
      : disk_(std::move(disk)), names_(std::move(names)) {}

  std::optional<std::string> next() override {
    disk_->check_fault();
    if (at_ == names_.size()) return std::nullopt;
    return names_[at_++];
  }

 private:
  std::shared_ptr<Disk> disk_;
  std::vector<std::string> names_;
  std::size_t at_ = 0;
};

std::vector<std::string> visible(std::vector<std::string> names) {
  std::erase_if(names, [](const std::string& name) { return name.front() == '.'; });
  return names;
}

class SimProfileLock : public ProfileLock {
 public:
  explicit SimProfileLock(std::shared_ptr<Disk> disk)
      : disk_(std::move(disk)), crashes_(disk_->crashes) {
    disk_->locked = true;
  }
  ~SimProfileLock() override {
    if (crashes_ == disk_->crashes) disk_->locked = false;
  }
  SimProfileLock(const SimProfileLock&) = delete;
  SimProfileLock& operator=(const SimProfileLock&) = delete;

 private:
  std::shared_ptr<Disk> disk_;
  int crashes_;
};

}  // namespace

SimFiles::SimFiles() : disk_(std::make_shared<Disk>()) {}

SimFiles::~SimFiles() = default;

std::unique_ptr<File> SimFiles::open_for_reading(const std::string& path) {
  disk_->check_fault();
  return std::make_unique<SimFile>(disk_, disk_->existing(normal_path(path)), false);
}

std::unique_ptr<File> SimFiles::open_partial(const std::string& folder, const std::string& name) {
  disk_->check_fault();
  const std::string path = entry_path(*disk_, folder, name);
  return std::make_unique<SimFile>(disk_, disk_->existing_or_new(path), true);
}

void SimFiles::finish_partial(const std::string& folder, const std::string& from,
                              const std::string& to) {
  disk_->check_fault();
  const std::string old_path = entry_path(*disk_, folder, from);
  const std::string new_path = entry_path(*disk_, folder, to);
  const auto file = disk_->existing(old_path);
  if (disk_->files.contains(new_path) || disk_->folders.contains(new_path)) {
    throw PlatformError(Errc::file_exists);
  }
  disk_->files.erase(old_path);
  disk_->files[new_path] = file;
  file->make_last();
}

void SimFiles::remove_partial(const std::string& folder, const std::string& name) {
  disk_->check_fault();
  disk_->files.erase(entry_path(*disk_, folder, name));
}

std::unique_ptr<DirectoryListing> SimFiles::list(const std::string& folder) {
  disk_->check_fault();
  disk_->check_folder(folder);
  return std::make_unique<SimListing>(disk_, visible(names(folder)));
}

std::unique_ptr<DirectoryListing> SimFiles::list_folders(const std::string& folder) {
  disk_->check_fault();
  disk_->check_folder(folder);
  return std::make_unique<SimListing>(disk_, visible(disk_->folders_in(normal_path(folder))));
}

std::uint64_t SimFiles::size(const std::string& path) {
  disk_->check_fault();
  return disk_->existing(normal_path(path))->content.size();
}

std::string SimFiles::read_whole(const std::string& path, std::size_t most) {
  disk_->check_fault();
  const auto file = disk_->existing(normal_path(path));
  if (file->content.size() > most) throw PlatformError(Errc::out_of_memory);
  return file->content;
}

void SimFiles::save(const std::string& path, std::string_view data) {
  disk_->check_fault();
  const std::string at = normal_path(path);
  disk_->check_place(at);
  if (disk_->room() < data.size()) throw PlatformError(Errc::disk_full);  // beside the old one
  disk_->replace(at, std::string(data));
}

void SimFiles::append(const std::string& path, std::string_view data) {
  disk_->check_fault();
  const auto file = disk_->existing_or_new(normal_path(path));
  disk_->write(*file, file->content.size(), data);
}

std::unique_ptr<ProfileLock> SimFiles::lock_profile() {
  disk_->check_fault();
  if (disk_->locked) return nullptr;
  return std::make_unique<SimProfileLock>(disk_);
}

void SimFiles::make_folder(const std::string& path) { disk_->make_folder(normal_path(path)); }

void SimFiles::put(const std::string& path, std::string data) {
  const std::string at = normal_path(path);
  disk_->make_folder(folder_of(at));
  disk_->replace(at, std::move(data));
}

void SimFiles::remove(const std::string& path) { disk_->files.erase(normal_path(path)); }

bool SimFiles::exists(const std::string& path) const {
  return disk_->files.contains(normal_path(path));
}

std::string SimFiles::content(const std::string& path) const {
  const auto found = disk_->files.find(normal_path(path));
  return found == disk_->files.end() ? "" : found->second->content;
}

std::vector<std::string> SimFiles::names(const std::string& folder) const {
  return disk_->names_in(normal_path(folder));
}

void SimFiles::set_capacity(std::uint64_t bytes) { disk_->capacity = bytes; }

void SimFiles::fail_next(int calls, int error) {
  disk_->faults_left = calls;
  disk_->fault = error;
}

void SimFiles::crash() { disk_->crash(); }

}  // namespace velmora::sim
