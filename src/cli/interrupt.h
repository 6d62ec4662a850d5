// Turns the signals with which a person ends a program into a descriptor that can be polled, so
// that a verb that waits ends in order. While it lives these signals do nothing else.
#pragma once

#include <signal.h>

namespace velmora::cli {

class Interrupt {
 public:
  Interrupt();
  ~Interrupt();
  Interrupt(const Interrupt&) = delete;
  Interrupt& operator=(const Interrupt&) = delete;

  [[nodiscard]] int descriptor() const { return descriptor_; }  // readable: a signal came

 private:
  sigset_t before_ = {};
  int descriptor_ = -1;
};

}  // namespace velmora::cli
