// Counts the memory that a simulated servent asks for, and refuses it once when told to. What the
// simulation itself asks for is never refused: a guard says on which side of the platform's seam
// the program is. Without failing_new.cpp in the program nothing is counted or refused.
// It is the one state that is not owned by anybody: operator new can be handed nothing.
#pragma once

#include <cstdint>
#include <utility>

namespace velmora::simulator {

struct AllocationGate {
  bool in_servent = false;
  std::uint64_t asked = 0;         // by servents, so far
  std::uint64_t refuse_at = 0;     // the number of the first request that is refused; 0: none
  std::uint64_t refuse_count = 1;  // and so many in a row
  std::uint64_t refused = 0;
  std::int64_t live = 0;  // blocks that were asked for by anybody and not given back

  [[nodiscard]] bool refuses() {
    if (!in_servent) return false;
    ++asked;
    if (refuse_at == 0 || asked < refuse_at || asked >= refuse_at + refuse_count) return false;
    ++refused;
    return true;
  }
  void refuse_after(std::uint64_t requests, std::uint64_t in_a_row = 1) {
    refuse_at = asked + 1 + requests;
    refuse_count = in_a_row;
  }
};

inline thread_local AllocationGate allocation_gate;

class Side {
 public:
  explicit Side(bool in_servent) : before_(std::exchange(allocation_gate.in_servent, in_servent)) {}
  ~Side() { allocation_gate.in_servent = before_; }
  Side(const Side&) = delete;
  Side& operator=(const Side&) = delete;

 private:
  bool before_;
};
struct InServent : Side {
  InServent() : Side(true) {}
};
struct InMachine : Side {
  InMachine() : Side(false) {}
};

// A place where the real platform would ask for memory on the servent's behalf.
void machine_needs_memory();

}  // namespace velmora::simulator
