// A file descriptor that is owned, and system calls that go on after a signal.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/error.h"

namespace velmora::uv {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  Descriptor(Descriptor&& other) noexcept : fd_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }

  [[nodiscard]] int get() const { return fd_; }
  int release() { return std::exchange(fd_, -1); }

 private:
  int fd_ = -1;
};

// Repeats a call that a signal interrupted; returns -1 with errno like the call itself.
template <class Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

// The same, but a failure raises the PlatformError of its errno.
template <class Call>
auto checked(Call call) {
  const auto result = uninterrupted(call);
  if (result == -1) throw PlatformError::from_errno(errno);
  return result;
}

}  // namespace velmora::uv
