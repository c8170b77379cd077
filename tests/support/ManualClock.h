#pragma once

#include <chrono>
#include <cstddef>

#include "framework/os/Clock.h"

namespace test_support {

/// Stops os::Clock for its lifetime: time passes only by `advance`. One at a time. Whoever still
/// waits with a deadline when it goes is released as if the deadline had come.
class ManualClock {
 public:
  ManualClock();
  ~ManualClock();

  ManualClock(const ManualClock&) = delete;
  ManualClock& operator=(const ManualClock&) = delete;

  [[nodiscard]] os::Clock::TimePoint now() const;

  /// Moves time on and wakes every waiter whose deadline has come. Does not wait for what they do
  /// then. The caller holds none of the waiters' locks.
  void advance(std::chrono::milliseconds by);

  /// Blocks until at least `count` threads wait with a deadline. False after 30 real seconds.
  [[nodiscard]] bool waitForWaiters(std::size_t count) const;

  /// Blocks until a thread waits with a deadline exactly `fromNow` ahead. False after 30 real
  /// seconds. What a test calls before `advance`, so that the waiter counts from the right time.
  [[nodiscard]] bool waitForDeadline(std::chrono::milliseconds fromNow) const;
};

}  // namespace test_support
