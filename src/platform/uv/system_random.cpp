#include "platform/uv/system_random.h"

#include <sys/random.h>

#include <cerrno>
#include <cstddef>

namespace velmora::uv {

void SystemRandom::fill(std::span<char> bytes) {
  while (!bytes.empty()) {
    const auto got = getrandom(bytes.data(), bytes.size(), 0);
    if (got >= 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(got));
    } else if (errno != EINTR) {
      throw PlatformError::from_errno(errno);
    }
  }
}

}  // namespace velmora::uv
