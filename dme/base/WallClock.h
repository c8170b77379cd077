#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace dme {

/// Tells the time of day in milliseconds since the epoch, UTC: for people, who compare it with
/// their own clocks. It may jump when the date is set, so nothing is decided by it. Called on the
/// engine's thread.
using WallClock = std::function<std::uint64_t()>;

inline std::uint64_t systemTime() {
  const auto since = std::chrono::system_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
}

}  // namespace dme
