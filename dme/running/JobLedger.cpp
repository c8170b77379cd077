#include "dme/running/JobLedger.h"

#include <chrono>

namespace dme {

namespace {
constexpr std::chrono::seconds kRetryAfter{1};
}

Refusal notStored() {
  return {Refusal::Reason::kNotStored, "the disk refuses to write",
          "free some space on the state directory's file system and try again"};
}

JobLedger::JobLedger(ObjectStore& store, std::function<void()> wake)
    : store_(store), table_(store), errands_(std::move(wake)) {
  board_.settle(table_.takeChanges(), true);
}

void JobLedger::commit(Stored stored) {
  const auto changes = std::make_shared<JobChanges>(table_.takeChanges());
  store_.commit(
      [this, changes, stored = std::move(stored)](const Result<void>& outcome) {
        board_.settle(std::move(*changes), outcome.has_value());
        if (!outcome) {
          errands_.leave([this] { retryAt_ = JobClock::now() + kRetryAfter; });
        }
        if (stored) {
          stored(outcome.has_value());
        }
      },
      CommitQueue::Tell::kOnQueuesThread);
}

void JobLedger::commitChanges() {
  if (table_.hasChanges()) {
    commit();
  }
}

void JobLedger::tick(TimePoint now) {
  if (retryAt_ && now >= *retryAt_) {
    retryAt_.reset();
    commit();
  }
}

}  // namespace dme
