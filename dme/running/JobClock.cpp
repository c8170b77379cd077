#include "dme/running/JobClock.h"

#include <algorithm>
#include <chrono>

namespace dme {

JobClock::TimePoint JobClock::momentOf(std::uint64_t deadline, std::uint64_t span) const {
  const std::uint64_t today = timeOfDay();
  const std::uint64_t left = deadline > today ? std::min(deadline - today, span) : 0;
  return now() + std::chrono::milliseconds(left);
}

}  // namespace dme
