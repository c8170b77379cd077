#include "agctl/Interrupt.h"

#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <ctime>

namespace agctl {
namespace {

sigset_t interrupts() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  sigaddset(&set, SIGTERM);
  return set;
}

}  // namespace

Interrupt::Interrupt() {
  const sigset_t set = interrupts();
  descriptor_ = ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

Interrupt::~Interrupt() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
}

unsigned Interrupt::count() {
  signalfd_siginfo information;
  while (descriptor_ >= 0 && ::read(descriptor_, &information, sizeof(information)) > 0) {
    ++count_;
  }
  return count_;
}

Interrupt::Hold::Hold() {
  const sigset_t set = interrupts();
  ::pthread_sigmask(SIG_BLOCK, &set, &before_);
}

Interrupt::Hold::~Hold() {
  const sigset_t set = interrupts();
  constexpr timespec kNoTime{};
  while (sigismember(&before_, SIGINT) == 0 && ::sigtimedwait(&set, nullptr, &kNoTime) > 0) {
  }
  ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace agctl
