#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "dme/Database.h"
#include "dme/Result.h"

namespace dme {

/// Makes transactions durable on a thread of its own. Transactions that wait while the disk is busy
/// go to it together, so that many cost as little as one.
///
/// What could not be written is kept and written with the next transactions, or a second later
/// by itself: the disk catches up with what the engine holds in memory, and no transaction is
/// reported as durable while anything before it is not.
class CommitQueue {
 public:
  /// Makes the changes durable, or none of them.
  using Write = std::function<Result<void>(std::span<const Change>)>;
  /// Gets the outcome of its transaction. A failed one may still become durable later.
  using Completion = std::function<void(const Result<void>& outcome)>;

  struct Counters {
    std::uint64_t transactions = 0;  // with changes in them
    std::uint64_t commits = 0;       // writes that succeeded, each of one or more transactions
    std::uint64_t failures = 0;      // writes that failed
  };

  explicit CommitQueue(Write write);
  ~CommitQueue();
  CommitQueue(const CommitQueue&) = delete;
  CommitQueue& operator=(const CommitQueue&) = delete;

  /// Queues a transaction; `done`, which may be empty, is called when it and everything before it
  /// are durable or the attempt failed: on the queue's thread, or, for a transaction without
  /// changes that finds everything durable, here and now. Never blocks on the disk. Thread-safe.
  void submit(std::vector<Change> changes, Completion done);

  /// Writes what waits, tries once more what failed, and joins the thread. Transactions that come
  /// later fail. Idempotent; not to be called from a completion.
  void stop();

  Counters counters() const;

 private:
  struct Transaction {
    std::vector<Change> changes;
    Completion done;
  };

  void run();
  /// Waits for work; false when the queue has stopped and nothing is left.
  bool take(std::vector<Transaction>& batch);
  Result<void> write(const std::vector<Transaction>& batch);
  void keep(const Change& change);

  const Write write_;

  mutable std::mutex mutex_;
  std::condition_variable wake_;
  std::vector<Transaction> waiting_;  // guarded by mutex_
  bool isBusy_ = false;               // guarded by mutex_: a batch is on its way to the disk
  bool isBehind_ = false;             // guarded by mutex_: unwritten_ is not empty
  bool isStopping_ = false;           // guarded by mutex_
  bool hasStopped_ = false;           // guarded by mutex_
  Counters counters_;                 // guarded by mutex_

  /// The last value of what could not be written, by object and property: an object's creation,
  /// which has no property, comes before its properties. Used by the thread alone.
  std::map<std::pair<std::string, std::string>, Change> unwritten_;

  std::thread thread_;  // last: it uses the rest
};

}  // namespace dme
