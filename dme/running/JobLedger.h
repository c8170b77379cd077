#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "dme/base/Refusal.h"
#include "dme/jobs/JobBoard.h"
#include "dme/jobs/JobTable.h"
#include "dme/running/Errands.h"
#include "dme/running/JobClock.h"
#include "dme/store/ObjectStore.h"

namespace dme {

/// Brings changes of jobs to the disk, and shows them when they are there.
///
/// Not thread-safe, save board() and errands(): its owner holds one lock for it and the store.
class JobLedger {
 public:
  using TimePoint = JobClock::TimePoint;
  /// Gets whether a transaction was stored, on the store's thread.
  using Stored = std::function<void(bool isStored)>;

  /// The store outlives this, and is closed before this goes. `wake` lets the engine's thread run
  /// the errands.
  JobLedger(ObjectStore& store, std::function<void()> wake);

  JobTable& table() { return table_; }
  const JobTable& table() const { return table_; }
  JobBoard& board() { return board_; }
  const JobBoard& board() const { return board_; }
  Errands& errands() { return errands_; }

  /// Makes one transaction of everything that was staged in the store.
  void commit(Stored stored = {});
  /// The same, but only if jobs have changed: what else was staged goes with its owner's.
  void commitChanges();
  /// As commit(), for an operator; tells `done`, on the store's thread, what came of it, and runs
  /// `afterwards` on the engine's thread. What was not stored is not shown later either:
  /// `afterwards` takes it back.
  template <class T>
  void commitAndTell(T result, Done<T> done, std::function<void(bool isStored)> afterwards);

  /// When tick() has something to do; nothing when it has not.
  std::optional<TimePoint> deadline() const { return retryAt_; }
  /// Shows what became durable without anybody being told: the disk has caught up.
  void tick(TimePoint now);

 private:
  /// What becomes of changes that are not stored: they are shown when they are, or never.
  enum class Unstored : std::uint8_t { kShownLater, kTakenBack };
  void commit(Unstored unstored, Stored stored);

  ObjectStore& store_;
  JobTable table_;
  JobBoard board_;
  Errands errands_;
  std::optional<TimePoint> retryAt_;
};

Refusal notStored();

template <class T>
void JobLedger::commitAndTell(T result, Done<T> done,
                              std::function<void(bool isStored)> afterwards) {
  commit(Unstored::kTakenBack, [this, result = std::move(result), done = std::move(done),
                                afterwards = std::move(afterwards)](bool isStored) {
    if (afterwards) {
      errands_.leave([afterwards, isStored] { afterwards(isStored); });
    }
    if (done) {
      done(isStored ? Granted<T>(result) : tl::unexpected(notStored()));
    }
  });
}

}  // namespace dme
