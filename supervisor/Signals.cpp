#include "supervisor/Signals.h"

#include <csignal>
#include <ctime>

namespace supervisor {
namespace {

sigset_t handled() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGTERM);
  sigaddset(&set, SIGINT);
  sigaddset(&set, SIGHUP);
  return set;
}

}  // namespace

Signals::Signals() {
  const sigset_t set = handled();
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
}

Request Signals::wait(std::chrono::milliseconds limit) {
  const sigset_t set = handled();
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limit);
  const std::chrono::nanoseconds rest = limit - seconds;
  const timespec timeout{seconds.count(), rest.count()};
  switch (sigtimedwait(&set, nullptr, &timeout)) {
    case SIGTERM:
    case SIGINT:
      return Request::Stop;
    case SIGHUP:
      return Request::Reload;
    default:
      return Request::None;
  }
}

}  // namespace supervisor
