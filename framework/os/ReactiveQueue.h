#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <thread>

#include "framework/os/Clock.h"
#include "framework/os/Stoppable.h"
#include "framework/os/Task.h"

namespace os {

/// Decides where an item of a queue runs: here and now, or on a pool.
class Doer {
 public:
  virtual ~Doer() = default;

  /// Takes over the item. Called on the queue's thread, one item at a time, in order. An exception
  /// is logged at level 8 and loses this item only.
  virtual void operator()(TaskPtr item) = 0;
};

/// Keeps an item out of a queue while an equal one is waiting in it. Called by the submitting
/// threads and the queue's thread at once, and under no lock of the queue: it guards itself.
class Deduplicator {
 public:
  virtual ~Deduplicator() = default;

  /// Notes that `item` is about to be queued. False when an equal item is already queued: this one
  /// is dropped then, and `leave` is not called for it.
  virtual bool enter(const Task& item) = 0;

  /// The item has left the queue and is about to go to the doer, or is being dropped.
  virtual void leave(const Task& item) = 0;
};

/// A first-in first-out queue and the one thread that hands its items to a doer.
class ReactiveQueue final : private Stoppable {
 public:
  /// Borrows both for its lifetime; `deduplicator` may be null. With `startNow` the thread starts
  /// here, without it in `activate`; until then items queue up. Throws std::invalid_argument when
  /// `doer` is null, std::system_error when the thread cannot be started.
  ReactiveQueue(Doer* doer, Deduplicator* deduplicator, bool startNow);

  /// Frees the items that wait and waits for the doer to finish the one that it has. Never from the
  /// doer.
  ~ReactiveQueue() override;

  ReactiveQueue(const ReactiveQueue&) = delete;
  ReactiveQueue& operator=(const ReactiveQueue&) = delete;

  /// Starts the thread of a queue that was built without. A second call has no effect. Throws
  /// std::system_error when the thread cannot be started.
  void activate();

  /// Takes over `item` and queues it. False when it was dropped and freed: null, already queued
  /// according to the deduplicator, or the queue is stopped. Never blocks for long; callable from
  /// any thread, also from the doer.
  bool submit(Task* item);

  /// Items that wait, not counting the one that the doer has.
  [[nodiscard]] std::size_t size() const;

 private:
  std::size_t stop(Clock::TimePoint deadline) override;
  void close();
  void drain();
  void handOver(TaskPtr item);
  void leave(const Task& item);

  Doer* const doer_;
  Deduplicator* const deduplicator_;

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  // Guarded by mutex_.
  std::deque<TaskPtr> items_;
  bool stopping_ = false;
  bool draining_ = false;  // the thread exists and has not come to its end
  std::thread thread_;
};

}  // namespace os
