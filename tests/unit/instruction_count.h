// Counts the instructions that a piece of work takes, which no other program on the machine can
// change. It runs in a child process that is let go on by one instruction at a time, so a few
// thousand of them are plenty; what it changes is lost with the child.
#pragma once

#include <cstdint>
#include <functional>

namespace velmora {

// The fewest of three runs, one behind the other in the same child: an array that grows in one of
// them does not count. -1 when it could not be counted, or takes more than a few million.
std::int64_t instructions_of(const std::function<void()>& work);

}  // namespace velmora
