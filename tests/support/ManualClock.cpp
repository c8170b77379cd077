#include "tests/support/ManualClock.h"

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

namespace test_support {
namespace {

constexpr std::chrono::seconds kPatience{30};

/// Outlives every ManualClock: a thread may have picked it up as the clock just before it was
/// taken out.
class ManualTime final : public os::Clock {
 public:
  static ManualTime& instance() {
    static ManualTime* const time = new ManualTime;
    return *time;
  }

  void start() {
    const std::lock_guard<std::mutex> guard(mutex_);
    now_ = std::chrono::steady_clock::now();
    running_ = true;
  }

  void stop() {
    std::unique_lock<std::mutex> lock(mutex_);
    running_ = false;
    wakeAll(lock);
  }

  void advance(std::chrono::milliseconds by) {
    std::unique_lock<std::mutex> lock(mutex_);
    now_ += by;
    wakeAll(lock);
  }

  [[nodiscard]] TimePoint now() const override {
    const std::lock_guard<std::mutex> guard(mutex_);
    return now_;
  }

  bool waitUntil(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                 TimePoint deadline, const std::function<bool()>& predicate) override {
    while (!predicate()) {
      if (isOver(deadline)) {
        return false;
      }
      waitOnce(condition, lock, deadline, predicate);
    }
    return true;
  }

  bool waitForWaiters(std::size_t count) {
    return await([this, count] { return waiters_.size() >= count; });
  }

  bool waitForDeadline(std::chrono::milliseconds fromNow) {
    return await([this, fromNow] {
      return std::any_of(waiters_.begin(), waiters_.end(), [this, fromNow](const Waiter* waiter) {
        return waiter->deadline == now_ + fromNow;
      });
    });
  }

 private:
  struct Waiter {
    std::condition_variable* condition;
    std::mutex* mutex;
    TimePoint deadline;
    unsigned wakers = 0;  // guarded by ManualTime::mutex_
  };

  [[nodiscard]] bool isOver(TimePoint deadline) const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return !running_ || now_ >= deadline;
  }

  void waitOnce(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                TimePoint deadline, const std::function<bool()>& predicate) {
    Waiter waiter{&condition, lock.mutex(), deadline};
    {
      const std::lock_guard<std::mutex> guard(mutex_);
      waiters_.push_back(&waiter);
      changed_.notify_all();
    }
    condition.wait(lock, [this, deadline, &predicate] { return predicate() || isOver(deadline); });
    // A waker holds on to the condition and wants the waiter's mutex: let it, before they go.
    lock.unlock();
    {
      std::unique_lock<std::mutex> guard(mutex_);
      std::erase(waiters_, &waiter);
      changed_.wait(guard, [&waiter] { return waiter.wakers == 0; });
    }
    lock.lock();
  }

  /// Takes each waiter's mutex before it notifies, or a waiter that has just read the time and is
  /// about to block would miss it; but never both mutexes at once.
  void wakeAll(std::unique_lock<std::mutex>& lock) {
    const std::vector<Waiter*> waiters = waiters_;
    for (Waiter* const waiter : waiters) {
      ++waiter->wakers;
    }
    lock.unlock();
    for (Waiter* const waiter : waiters) {
      const std::lock_guard<std::mutex> guard(*waiter->mutex);
      waiter->condition->notify_all();
    }
    lock.lock();
    for (Waiter* const waiter : waiters) {
      --waiter->wakers;
    }
    changed_.notify_all();
  }

  bool await(const std::function<bool()>& predicate) {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, kPatience, predicate);
  }

  mutable std::mutex mutex_;  // taken after a waiter's mutex, never before it
  std::condition_variable changed_;
  // Guarded by mutex_.
  TimePoint now_;
  bool running_ = false;
  std::vector<Waiter*> waiters_;
};

}  // namespace

ManualClock::ManualClock() {
  ManualTime::instance().start();
  os::Clock::install(&ManualTime::instance());
}

ManualClock::~ManualClock() {
  os::Clock::install(nullptr);
  ManualTime::instance().stop();
}

os::Clock::TimePoint ManualClock::now() const {
  return ManualTime::instance().now();
}

void ManualClock::advance(std::chrono::milliseconds by) {
  ManualTime::instance().advance(by);
}

bool ManualClock::waitForWaiters(std::size_t count) const {
  return ManualTime::instance().waitForWaiters(count);
}

bool ManualClock::waitForDeadline(std::chrono::milliseconds fromNow) const {
  return ManualTime::instance().waitForDeadline(fromNow);
}

}  // namespace test_support
