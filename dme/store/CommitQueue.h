#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "dme/base/Result.h"
#include "dme/store/ChangeSet.h"

namespace dme {

/// Makes transactions durable on a thread of its own. Transactions that wait while the disk is busy
/// go to it together, so that many cost as little as one; what a later one makes pointless does not
/// go at all, so that what waits stays bounded by the objects that there are.
///
/// What could not be written is kept and written with the next transactions, or a second later
/// by itself: the disk catches up with what the engine holds in memory, and no transaction is
/// reported as durable while anything before it is not.
class CommitQueue {
 public:
  /// Makes the changes durable, or none of them.
  using Write = std::function<Result<void>(const ChangeSet&)>;
  /// Gets the outcome of its transaction. A failed one may still become durable later.
  using Completion = std::function<void(const Result<void>& outcome)>;

  struct Counters {
    std::uint64_t transactions = 0;  // with changes in them
    std::uint64_t commits = 0;       // writes that succeeded, each of one or more transactions
    std::uint64_t failures = 0;      // writes that failed
    bool isBehind = false;           // what is in memory could not be written yet
  };

  explicit CommitQueue(Write write);
  ~CommitQueue();
  CommitQueue(const CommitQueue&) = delete;
  CommitQueue& operator=(const CommitQueue&) = delete;

  /// Where the outcome of a transaction without changes is told that finds everything durable.
  enum class Tell : std::uint8_t { kHereAndNow, kOnQueuesThread };

  /// Queues a transaction; `done`, which may be empty, is called when it and everything before it
  /// are durable or the attempt failed: on the queue's thread, or where `tell` says. After stop()
  /// it is called here. Never blocks on the disk. Thread-safe.
  void submit(ChangeSet changes, Completion done, Tell tell = Tell::kHereAndNow);

  /// Writes what waits, tries once more what failed, and joins the thread. Transactions that come
  /// later fail. Idempotent; not to be called from a completion.
  void stop();

  Counters counters() const;

 private:
  /// Transactions that become durable together.
  struct Batch {
    ChangeSet changes;
    std::vector<Completion> completions;
    bool empty() const { return changes.empty() && completions.empty(); }
  };

  void run();
  /// Waits for work; false when the queue has stopped and nothing is left.
  bool take(Batch& batch);
  Result<void> write(ChangeSet changes);

  const Write write_;

  mutable std::mutex mutex_;
  std::condition_variable wake_;
  Batch waiting_;            // guarded by mutex_
  bool isBusy_ = false;      // guarded by mutex_: a batch is on its way to the disk
  bool isBehind_ = false;    // guarded by mutex_: unwritten_ is not empty
  bool isStopping_ = false;  // guarded by mutex_
  bool hasStopped_ = false;  // guarded by mutex_
  Counters counters_;        // guarded by mutex_

  ChangeSet unwritten_;  // what could not be written; used by the thread alone

  std::thread thread_;  // last: it uses the rest
};

}  // namespace dme
