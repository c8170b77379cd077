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
  commit(Unstored::kShownLater, std::move(stored));
}

void JobLedger::commit(Unstored unstored, Stored stored) {
  const auto changes = std::make_shared<JobChanges>(table_.takeChanges());
  store_.commit(
      [this, changes, unstored, stored = std::move(stored)](const Result<void>& outcome) {
        const bool isShown = outcome || unstored == Unstored::kShownLater;
        board_.settle(isShown ? std::move(*changes) : JobChanges(), outcome.has_value());
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
