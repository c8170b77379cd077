#pragma once

#include <atomic>
#include <chrono>
#include <future>
#include <memory>

#include "framework/os/WaitObserver.h"

namespace test_support {

/// Tells a test that another thread is about to wait, also where no clock limits the wait.
class WaitWatch {
 public:
  /// On the thread that is going to wait.
  void watchThisThread() { os::WaitObserver::observeThisThread(observer_); }

  /// Blocks until that thread is about to wait. False after 30 real seconds.
  [[nodiscard]] bool waitUntilWaiting() {
    return waits_.wait_for(std::chrono::seconds(30)) == std::future_status::ready;
  }

 private:
  class Observer final : public os::WaitObserver {
   public:
    void onWait() noexcept override {
      if (!told_.exchange(true)) {
        begun.set_value();
      }
    }

    std::promise<void> begun;

   private:
    std::atomic<bool> told_ = false;
  };

  const std::shared_ptr<Observer> observer_ = std::make_shared<Observer>();
  const std::future<void> waits_ = observer_->begun.get_future();
};

}  // namespace test_support
