#pragma once

#include <cstdint>
#include <utility>

#include "dme/base/WallClock.h"
#include "framework/os/Clock.h"

namespace dme {

/// Turns times of day, which survive a restart, into moments of the steady clock, by which things
/// are decided.
class JobClock {
 public:
  using TimePoint = os::Clock::TimePoint;

  explicit JobClock(WallClock wallClock) : wallClock_(std::move(wallClock)) {}

  std::uint64_t timeOfDay() const { return wallClock_(); }
  static TimePoint now() { return os::Clock::instance().now(); }

  /// The moment of a deadline that was `span` milliseconds away when it was set. However the date
  /// was changed since, it is never further away than that.
  TimePoint momentOf(std::uint64_t deadline, std::uint64_t span) const;

 private:
  WallClock wallClock_;
};

}  // namespace dme
