#include "framework/os/WaitableEvent.h"

#include <chrono>

#include "framework/os/Clock.h"
#include "framework/os/WaitObserver.h"

namespace os {

void WaitableEvent::set() {
  // Notifies with the mutex held: a waiter cannot return, and destroy the event, before that.
  const std::lock_guard<std::mutex> guard(mutex_);
  isSet_ = true;
  changed_.notify_all();
}

unsigned WaitableEvent::wait(unsigned milliseconds) {
  std::unique_lock<std::mutex> lock(mutex_);
  const auto isSet = [this] {
    return isSet_;
  };
  if (!isSet_ && milliseconds > 0) {
    lock.unlock();
    WaitObserver::announceWait();
    lock.lock();
  }
  if (milliseconds == kNoLimit) {
    changed_.wait(lock, isSet);
    return 0;
  }
  Clock& clock = Clock::instance();
  const Clock::TimePoint deadline = clock.now() + std::chrono::milliseconds(milliseconds);
  return clock.waitUntil(changed_, lock, deadline, isSet) ? 0 : 1;
}

void WaitableEvent::reset() {
  const std::lock_guard<std::mutex> guard(mutex_);
  isSet_ = false;
}

}  // namespace os
