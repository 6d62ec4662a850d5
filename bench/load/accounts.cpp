#include "load/accounts.h"

#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>

namespace velmora::bench {
namespace {

std::string folder_of(pid_t process) { return "/proc/" + std::to_string(process); }

}  // namespace

std::uint64_t processor_ns(pid_t process) {
  std::uint64_t sum = 0;
  std::error_code gone;
  for (const auto& thread :
       std::filesystem::directory_iterator(folder_of(process) + "/task", gone)) {
    std::uint64_t used = 0;
    if (std::ifstream(thread.path() / "schedstat") >> used) sum += used;
  }
  return sum;
}

std::uint64_t resident_kib(pid_t process) {
  std::ifstream status(folder_of(process) + "/status");
  for (std::string word; status >> word;) {
    std::uint64_t kib = 0;
    if (word == "VmRSS:" && status >> kib) return kib;
  }
  return 0;
}

std::uint64_t now_ns() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000U +
         static_cast<std::uint64_t>(now.tv_nsec);
}

}  // namespace velmora::bench
