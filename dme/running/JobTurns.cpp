#include "dme/running/JobTurns.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace dme {

void JobTurns::take(TimePoint now, const std::function<void(Job&)>& send) {
  if (!std::exchange(isDue_, false)) {
    return;
  }
  const std::vector<std::uint32_t> slots = table_.slots();
  const auto first = std::upper_bound(slots.begin(), slots.end(), lastSlot_);
  std::vector<std::uint32_t> round(first, slots.end());
  round.insert(round.end(), slots.begin(), first);
  for (const std::uint32_t slot : round) {
    Job* const next = nextOf(slot, now);
    if (next != nullptr && sending_.size() < kMostSending && !sending_.contains(slot)) {
      lastSlot_ = slot;
      send(*next);
    }
  }
}

Job* JobTurns::nextOf(std::uint32_t slot, TimePoint now) {
  Job* next = nullptr;
  for (const std::uint64_t id : table_.ofSlot(slot)) {
    Job& job = *table_.find(id);
    if (job.view.state != JobState::kAccepted || !job.isConfirmed || job.end) {
      continue;
    }
    const JobObstacle obstacle = obstacleOf(job.view);
    updateReason(job, obstacle);
    if (next == nullptr && job.dueFrom <= now && obstacle == JobObstacle::kNone) {
      next = &job;
    }
  }
  return next;
}

void JobTurns::ended(std::uint32_t slot) {
  sending_.erase(slot);
  setDue();
}

void JobTurns::pause(Job& job, TimePoint now) {
  job.obstacle = JobObstacle::kNone;  // the reason is that it was not delivered, until that changes
  std::chrono::seconds pause = kFirstPause;
  for (std::uint32_t i = 1; i < job.view.attempts && pause < kLongestPause; ++i) {
    pause *= 2;
  }
  job.dueFrom = now + std::min(pause, kLongestPause);
}

bool JobTurns::shortenPause(Job& job, TimePoint now) {
  const TimePoint soon = now + kFirstPause;
  if (job.view.state != JobState::kAccepted || job.dueFrom <= soon) {
    return false;
  }
  job.dueFrom = soon;
  return true;
}

void JobTurns::gatewayConnected() {
  knownFrom_.clear();
  setDue();
}

void JobTurns::bladeRegistered(std::uint32_t slot, TimePoint now) {
  knownFrom_[slot] = now + kFirstPause;
  setDue();
}

void JobTurns::bladeHeard(std::uint32_t slot, TimePoint now) {
  if (knownFrom_.emplace(slot, now).second) {
    setDue();
  }
}

bool JobTurns::keepBack(Job& job) const {
  const auto known = knownFrom_.find(job.view.slot);
  if (job.view.state != JobState::kAccepted || isUnsentToldApart(job.view.verb) ||
      known == knownFrom_.end() || job.dueFrom >= known->second) {
    return false;
  }
  job.dueFrom = known->second;
  return true;
}

sd::Admission JobTurns::admissionOf(const JobView& job) const {
  const Object* const slot = chassis_.slot(job.slot);
  return slot != nullptr ? static_cast<sd::Admission>(slot->get(sd::SlotMo::kAdmission))
                         : sd::Admission::kNone;
}

void JobTurns::noteForeign(Job& job) const {
  job.wasForeign = job.wasForeign || admissionOf(job.view) == sd::Admission::kForeign;
}

JobObstacle JobTurns::obstacleOf(const JobView& job) const {
  const sd::Admission admission = admissionOf(job);
  const bool isForeign = admission == sd::Admission::kForeign;
  if (admission != sd::Admission::kValid && !(isForeign && job.verb == JobVerb::kFormatDisk)) {
    return isForeign ? JobObstacle::kForeignBlade : JobObstacle::kNoBlade;
  }
  if (!gateway_.isConnected()) {
    return JobObstacle::kNoGateway;
  }
  const bool isKeptBack = !isUnsentToldApart(job.verb) && !knownFrom_.contains(job.slot);
  return isKeptBack ? JobObstacle::kNotAnnounced : JobObstacle::kNone;
}

JobNote JobTurns::waiting(const JobView& job) const {
  const std::string slot = "slot " + std::to_string(job.slot);
  switch (obstacleOf(job)) {
    case JobObstacle::kNoBlade:
      return {JobReason::kWaitsForBlade, "no blade is registered in " + slot};
    case JobObstacle::kForeignBlade:
      return {JobReason::kWaitsForBlade, "the blade in " + slot + " must be formatted"};
    case JobObstacle::kNoGateway:
      return {JobReason::kWaitsForBlade, "no gateway has connected"};
    case JobObstacle::kNotAnnounced:
      return {JobReason::kWaitsForBlade,
              "the blade in " + slot + " has not registered since the gateway connected"};
    case JobObstacle::kNone:
      break;
  }
  return {JobReason::kWaitsForTurn, ""};
}

void JobTurns::updateReason(Job& job, JobObstacle obstacle) {
  if (std::exchange(job.obstacle, obstacle) == obstacle) {
    return;
  }
  JobNote note = waiting(job.view);
  if (job.view.reason == note.reason && job.view.cause == note.cause) {
    return;
  }
  setNote(job.view, std::move(note));
  table_.save(job);
}

}  // namespace dme
