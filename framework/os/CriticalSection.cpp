#include "framework/os/CriticalSection.h"

#include <cstdlib>

#include "framework/core_log/Log.h"

namespace os {

CriticalSection::~CriticalSection() {
  // Also waits until the thread that passed the section on has left the mutex.
  const std::lock_guard<std::mutex> guard(mutex_);
  const bool heldByAnother = depth_ > 0 && owner_ != std::this_thread::get_id();
  if (heldByAnother || first_ != nullptr) {
    core_log::logPrintf(__func__, core_log::serviceLevel(), 8,
                        "A critical section is destroyed while another thread %s it",
                        heldByAnother ? "holds" : "waits for");
    std::abort();
  }
}

void CriticalSection::lock() {
  const std::thread::id self = std::this_thread::get_id();
  std::unique_lock<std::mutex> guard(mutex_);
  if (depth_ > 0 && owner_ == self) {
    ++depth_;
    return;
  }
  if (depth_ == 0) {
    owner_ = self;
    depth_ = 1;
    return;
  }
  Waiter waiter;
  waiter.thread = self;
  enqueue(waiter);
  waiter.granted.wait(guard, [&waiter] { return waiter.isOwner; });
}

void CriticalSection::unlock() {
  std::unique_lock<std::mutex> guard(mutex_);
  if (depth_ == 0 || owner_ != std::this_thread::get_id()) {
    guard.unlock();
    core_log::logPrintf(__func__, core_log::serviceLevel(), 8,
                        "A critical section is released by a thread that does not hold it");
    return;
  }
  if (--depth_ == 0) {
    passOn();
  }
}

bool CriticalSection::isHeldByCaller() const {
  const std::lock_guard<std::mutex> guard(mutex_);
  return depth_ > 0 && owner_ == std::this_thread::get_id();
}

unsigned CriticalSection::waiterCount() const {
  const std::lock_guard<std::mutex> guard(mutex_);
  return waiters_;
}

void CriticalSection::enqueue(Waiter& waiter) {
  if (last_ != nullptr) {
    last_->next = &waiter;
  } else {
    first_ = &waiter;
  }
  last_ = &waiter;
  ++waiters_;
}

void CriticalSection::passOn() {
  Waiter* const next = first_;
  if (next == nullptr) {
    owner_ = {};
    return;
  }
  first_ = next->next;
  if (first_ == nullptr) {
    last_ = nullptr;
  }
  --waiters_;
  owner_ = next->thread;
  depth_ = 1;
  next->isOwner = true;
  // With the mutex held: the waiter's condition lives on its stack and goes when it runs.
  next->granted.notify_one();
}

}  // namespace os
