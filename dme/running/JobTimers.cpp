#include "dme/running/JobTimers.h"

#include <algorithm>

namespace dme {

namespace {

std::optional<JobTimers::TimePoint> momentOf(const Job& job, JobTimers::TimePoint now) {
  switch (job.view.state) {
    case JobState::kAccepted:
      return job.dueFrom > now ? std::min(job.dueFrom, job.deliverBy) : job.deliverBy;
    case JobState::kSending:
    case JobState::kRunning:
      return job.finishBy;
    default:
      return std::nullopt;
  }
}

}  // namespace

void JobTimers::file(Job& job, TimePoint now) {
  drop(job);
  job.timer = momentOf(job, now);
  if (job.timer) {
    timers_.emplace(*job.timer, job.view.id);
  }
}

void JobTimers::drop(Job& job) {
  if (job.timer) {
    timers_.erase({*job.timer, job.view.id});
    job.timer.reset();
  }
}

std::optional<JobTimers::TimePoint> JobTimers::first() const {
  return timers_.empty() ? std::nullopt : std::optional(timers_.begin()->first);
}

std::optional<std::uint64_t> JobTimers::take(TimePoint now) {
  if (timers_.empty() || timers_.begin()->first > now) {
    return std::nullopt;
  }
  const std::uint64_t id = timers_.begin()->second;
  timers_.erase(timers_.begin());
  return id;
}

}  // namespace dme
