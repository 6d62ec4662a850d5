#include "platform/uv/uv_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <limits>

namespace velmora::uv {

void write_all(int fd, std::string_view data) {
  while (!data.empty()) {
    const ssize_t written = checked([&] { return ::write(fd, data.data(), data.size()); });
    data.remove_prefix(static_cast<std::size_t>(written));
  }
}

std::uint64_t UvFile::size() const {
  struct stat status {};
  checked([&] { return fstat(file_.get(), &status); });
  return static_cast<std::uint64_t>(status.st_size);
}

void UvFile::read_into(std::string& data, std::uint64_t offset, std::size_t most) {
  const std::uint64_t whole = size();
  data.resize(offset < whole ? std::min<std::uint64_t>(most, whole - offset) : 0);
  std::size_t filled = 0;
  while (filled < data.size()) {
    const ssize_t count = checked([&] {
      return pread(file_.get(), data.data() + filled, data.size() - filled,
                   static_cast<off_t>(offset + filled));
    });
    if (count == 0) break;  // cut meanwhile
    filled += static_cast<std::size_t>(count);
  }
  data.resize(filled);
}

void UvFile::write(std::uint64_t offset, std::string_view data) {
  if (offset > size()) throw PlatformError(Errc::input_past_end);
  while (!data.empty()) {
    const ssize_t written = checked(
        [&] { return pwrite(file_.get(), data.data(), data.size(), static_cast<off_t>(offset)); });
    offset += static_cast<std::uint64_t>(written);
    data.remove_prefix(static_cast<std::size_t>(written));
  }
}

void UvFile::truncate(std::uint64_t size) {
  if (size > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) {
    throw PlatformError::from_errno(EFBIG);
  }
  checked([&] { return ftruncate(file_.get(), static_cast<off_t>(size)); });
}

void UvFile::sync() {
  checked([&] { return fsync(file_.get()); });
}

}  // namespace velmora::uv
