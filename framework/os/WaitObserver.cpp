#include "framework/os/WaitObserver.h"

#include <utility>

namespace os {
namespace {

std::weak_ptr<WaitObserver>& observerOfThisThread() {
  thread_local std::weak_ptr<WaitObserver> observer;
  return observer;
}

}  // namespace

void WaitObserver::observeThisThread(std::weak_ptr<WaitObserver> observer) {
  observerOfThisThread() = std::move(observer);
}

void WaitObserver::announceWait() noexcept {
  if (const std::shared_ptr<WaitObserver> observer = observerOfThisThread().lock()) {
    observer->onWait();
  }
}

}  // namespace os
