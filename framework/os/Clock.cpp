#include "framework/os/Clock.h"

#include <atomic>

namespace os {
namespace {

class SteadyClock final : public Clock {
 public:
  [[nodiscard]] TimePoint now() const override { return std::chrono::steady_clock::now(); }

  bool waitUntil(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                 TimePoint deadline, const std::function<bool()>& predicate) override {
    return condition.wait_until(lock, deadline, predicate);
  }
};

constinit std::atomic<Clock*> installed{nullptr};

}  // namespace

Clock& Clock::instance() {
  // Never destroyed: threads that outlive main still wait.
  static SteadyClock* const steady = new SteadyClock;
  Clock* const clock = installed.load(std::memory_order_acquire);
  return clock != nullptr ? *clock : *steady;
}

Clock* Clock::install(Clock* clock) {
  return installed.exchange(clock, std::memory_order_acq_rel);
}

}  // namespace os
