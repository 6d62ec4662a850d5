#include "transfer/partial_file.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "transfer/disk_name.h"

namespace velmora {
namespace {

std::string partial(const std::string& name) { return name + std::string(kPartialExtension); }

std::uint64_t length_if_there(Files& files, const std::string& path) {
  try {
    return files.size(path);
  } catch (const PlatformError& error) {
    if (error.code() != Errc::path_not_found) throw;
    return 0;
  }
}

}  // namespace

PartialFile::PartialFile(Files& files, std::string folder, std::string name, std::uint64_t start)
    : files_(files), folder_(std::move(folder)), name_(std::move(name)), position_(start) {
  if (folder_.empty()) throw PlatformError(Errc::path_not_found);
  if (start > 0 && length_on_disk(files_, folder_, name_) < start) {
    throw PlatformError(Errc::input_past_end);
  }
  file_ = files_.open_partial(folder_, partial(name_));
  if (file_->size() < start) throw PlatformError(Errc::input_past_end);
}

std::uint64_t PartialFile::length_on_disk(Files& files, const std::string& folder,
                                          const std::string& name) {
  return length_if_there(files, path_in(folder, partial(name)));
}

std::uint64_t PartialFile::finished_length(Files& files, const std::string& folder,
                                           const std::string& name) {
  return length_if_there(files, path_in(folder, name));
}

void PartialFile::remove(Files& files, const std::string& folder, const std::string& name) {
  if (folder.empty()) throw PlatformError(Errc::path_not_found);
  files.remove_partial(folder, partial(name));
}

std::string PartialFile::before(std::size_t most) const {
  const std::uint64_t length = std::min<std::uint64_t>(most, position_);
  return file_->read(position_ - length, static_cast<std::size_t>(length));
}

void PartialFile::cut(std::uint64_t length) {
  if (file_->size() > length) file_->truncate(length);
  position_ = std::min(position_, length);
}

void PartialFile::write(std::string_view data) {
  file_->write(position_, data);
  position_ += data.size();
}

void PartialFile::finish() {
  if (file_->size() > position_) file_->truncate(position_);
  file_->sync();
  file_.reset();
  files_.finish_partial(folder_, partial(name_), name_);
}

}  // namespace velmora
