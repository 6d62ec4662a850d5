// What a process has used so far, as the kernel tells it: the server under load and the load
// itself. Reads /proc only.
#pragma once

#include <sys/types.h>

#include <cstdint>

namespace velmora::bench {

// Nanoseconds of processor time, of all threads; 0 when the process is gone.
std::uint64_t processor_ns(pid_t process);
// Kilobytes that are in memory now.
std::uint64_t resident_kib(pid_t process);
// Nanoseconds of a clock that never goes back.
std::uint64_t now_ns();

}  // namespace velmora::bench
