#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "dme/jobs/JobView.h"

namespace dme {

/// What one transaction does to jobs: these are as they are from then on, those are gone.
struct JobChanges {
  std::vector<JobView> changed;
  std::vector<std::uint64_t> removed;

  bool empty() const { return changed.empty() && removed.empty(); }
  void append(JobChanges later);
};

/// The jobs as people may see them: each as it is on the disk, and no further. Tells those who
/// watch a job when it has changed.
///
/// Thread-safe. Nothing here waits, but unwatch() for a call that is under way.
class JobBoard {
 public:
  using WatchId = std::uint64_t;
  using Changed = std::function<void(const JobView&)>;

  /// Takes the outcome of a transaction, in the order of the transactions. Changes that could not
  /// be stored are kept until a later transaction is: that is durable with all before it. Calls
  /// those who watch, on this thread.
  void settle(JobChanges changes, bool isStored);
  /// Whether changes wait for a transaction that is stored.
  bool isBehind() const;

  std::vector<JobView> list(const JobFilter& filter) const;
  std::optional<JobView> find(std::uint64_t id) const;

  /// Calls `changed` once, as soon as the job's revision is above `revision`: at once on this
  /// thread, or from settle(). 0 for an unknown job: then it is never called.
  WatchId watch(std::uint64_t id, std::uint64_t revision, Changed changed);
  /// Afterwards it is not called any more. Waits for a call that is under way, unless this is it:
  /// hold no lock that the function takes.
  void unwatch(WatchId id);

 private:
  struct Watch {
    WatchId id;
    std::uint64_t revision;
    Changed changed;
  };
  struct Call {
    WatchId id;
    Changed changed;
    JobView view;
  };

  void show(JobView view, std::vector<Call>& calls);
  void tell(const std::vector<Call>& calls);
  /// Whether the call is still wanted; if so, it is under way.
  bool begin(WatchId id);
  void end();

  mutable std::mutex mutex_;
  std::condition_variable over_;                         // a call has ended
  std::map<std::uint64_t, JobView> jobs_;                // guarded by mutex_
  JobChanges waiting_;                                   // guarded by mutex_
  std::map<std::uint64_t, std::vector<Watch>> watches_;  // guarded by mutex_; by job
  std::vector<WatchId> due_;                             // guarded by mutex_: to be called yet
  WatchId called_ = 0;                                   // guarded by mutex_: under way, or 0
  std::thread::id caller_;                               // guarded by mutex_
  WatchId lastWatch_ = 0;                                // guarded by mutex_
};

}  // namespace dme
