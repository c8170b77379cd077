#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <utility>

#include "dme/jobs/JobTable.h"

namespace dme {

/// When which job is to be looked at: each under one moment at most. Not thread-safe.
class JobTimers {
 public:
  using TimePoint = os::Clock::TimePoint;

  /// Files the job under the moment that its state asks for, or takes it out.
  void file(Job& job, TimePoint now);
  void drop(Job& job);

  std::optional<TimePoint> first() const;
  /// Takes out the next job whose moment has come; nothing when there is none.
  std::optional<std::uint64_t> take(TimePoint now);

 private:
  std::set<std::pair<TimePoint, std::uint64_t>> timers_;
};

}  // namespace dme
