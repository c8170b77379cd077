#pragma once

#include <atomic>
#include <cstdint>

#include "framework/os/Clock.h"

namespace fuzz {

/// A clock on which no time-out costs anything: who waits for what is not there yet finds that the
/// deadline has come. Only for runs in which nobody but the waiter itself could bring it about.
class InstantClock final : public os::Clock {
 public:
  [[nodiscard]] TimePoint now() const override { return TimePoint(Duration(ticks_.load())); }

  bool waitUntil(std::condition_variable& /*condition*/, std::unique_lock<std::mutex>& /*lock*/,
                 TimePoint deadline, const std::function<bool()>& predicate) override {
    if (predicate()) {
      return true;
    }
    const Duration::rep reached = deadline.time_since_epoch().count();
    for (Duration::rep at = ticks_.load(); at < reached;) {
      ticks_.compare_exchange_weak(at, reached);
    }
    return predicate();
  }

  /// Makes such a clock the process's, for good.
  static void install() {
    static InstantClock& clock = *new InstantClock;
    os::Clock::install(&clock);
  }

 private:
  std::atomic<Duration::rep> ticks_{0};
};

}  // namespace fuzz
