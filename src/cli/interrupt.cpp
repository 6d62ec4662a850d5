#include "cli/interrupt.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include "cli/failure.h"

namespace velmora::cli {

Interrupt::Interrupt() {
  sigset_t ending;
  sigemptyset(&ending);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) sigaddset(&ending, signal);
  descriptor_ = signalfd(-1, &ending, SFD_CLOEXEC | SFD_NONBLOCK);
  if (descriptor_ < 0) throw Failure("cannot watch for signals");
  sigprocmask(SIG_BLOCK, &ending, &before_);
}

Interrupt::~Interrupt() {
  // a signal that has come has had its effect: taken, so that it does not end the program now
  signalfd_siginfo taken = {};
  while (read(descriptor_, &taken, sizeof taken) > 0) {
  }
  close(descriptor_);
  sigprocmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace velmora::cli
