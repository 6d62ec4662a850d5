// The operators new and delete of a program that plays failures of allocation.
#include <cstdlib>
#include <new>

#include "simulator/allocation_gate.h"

namespace {

void* allocated(std::size_t size) {
  velmora::simulator::AllocationGate& gate = velmora::simulator::allocation_gate;
  if (gate.refuses()) throw std::bad_alloc();
  void* const block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  ++gate.live;
  return block;
}

void freed(void* block) {
  if (block == nullptr) return;
  --velmora::simulator::allocation_gate.live;
  std::free(block);
}

}  // namespace

void* operator new(std::size_t size) { return allocated(size); }
void* operator new[](std::size_t size) { return allocated(size); }
void operator delete(void* block) noexcept { freed(block); }
void operator delete[](void* block) noexcept { freed(block); }
void operator delete(void* block, std::size_t) noexcept { freed(block); }
void operator delete[](void* block, std::size_t) noexcept { freed(block); }
