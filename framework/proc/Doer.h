#pragma once

#include <deque>
#include <mutex>

#include "framework/os/ReactiveQueue.h"
#include "framework/os/Task.h"

namespace mo {
class Transactor;
}
namespace os {
class ThreadPool;
}

namespace proc {

/// Brings what comes off the service's queue to its pool, or runs it on the queue's own thread as
/// long as the pool is not at work. Each item runs in a transaction, which is rolled back when the
/// item's method fails.
///
/// Stimuli without the bulk word (the state, bootstrap and log control exchanges) run one after
/// another in the order of their arrival, so that of two settings the later one stays. The others
/// begin in that order but run side by side. A callback of an ordered stimulus must not wait for
/// another ordered one.
class Doer final : public os::Doer {
 public:
  /// Borrows the transactor for its life.
  explicit Doer(mo::Transactor* transactor);

  void operator()(os::TaskPtr item) override;

 private:
  class PoolTask;
  class LaneTask;

  void enqueue(os::TaskPtr item, os::ThreadPool& pool);
  void drain();
  void runItem(os::Task& item) const;

  mo::Transactor* const transactor_;

  std::mutex lock_;
  std::deque<os::TaskPtr> lane_;  // guarded by lock_
  bool isDraining_ = false;       // guarded by lock_; a LaneTask is submitted or running
};

}  // namespace proc
