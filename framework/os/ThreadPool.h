#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>

#include "framework/os/Clock.h"
#include "framework/os/Stoppable.h"
#include "framework/os/Task.h"

namespace os {

/// Threads that run tasks in the order of submission.
///
/// The pool begins with `initial` threads, adds one when a task is queued and no thread is free for
/// it, up to `maximum`, and lets threads go that were idle for kIdleTime, down to `minimum`.
///
/// Tasks may run for ever. Such threads end with the process: a pool that holds them is left alone,
/// not destroyed, and the program stops everything else with os::stopAll and leaves by
/// std::quick_exit or std::_Exit, so that no static object is destroyed under a running thread.
/// Nothing in this folder or in core_log is destroyed at exit.
class ThreadPool final : private Stoppable {
 public:
  static constexpr std::chrono::seconds kIdleTime{10};

  /// With `startNow` the threads start here, without it in `activate`; until then tasks queue up.
  /// Throws std::invalid_argument when `maximum` is 0 or below `initial` or `minimum`. A thread
  /// that the machine refuses is logged at level 8 and tried again with the next task.
  ThreadPool(unsigned initial, unsigned maximum, unsigned minimum, bool startNow);

  /// `shutdown` without a limit: waits for the running tasks. After a `shutdown` that ran out of
  /// time it returns at once and the threads that are still busy end on their own. Never from one
  /// of the pool's own tasks.
  ~ThreadPool() override;

  ThreadPool(const ThreadPool&) = delete;
  ThreadPool& operator=(const ThreadPool&) = delete;

  /// Starts the threads of a pool that was built without. A second call has no effect.
  void activate();

  /// Takes over `task` and queues it, followed by `copies` - 1 clones of it, as far as it can be
  /// cloned. Returns the id of the first, from 1 upwards. -1 when the task is null, `copies` is
  /// less than 1 or the pool is shut down; the task is freed then too. Never blocks for long;
  /// callable from any thread, also from a task.
  int submit(Task* task, int copies = 1);

  /// Takes no more tasks, frees those that have not begun (neither run nor onExit is called) and
  /// waits until `limit` has passed for those that are running. True when every thread has ended.
  bool shutdown(std::chrono::milliseconds limit);

  /// Threads alive, busy or idle.
  [[nodiscard]] unsigned threadCount() const;

 private:
  struct State;

  std::size_t stop(Clock::TimePoint deadline) override;
  int enqueue(std::deque<TaskPtr> batch);
  std::deque<TaskPtr> close();

  // Shared with the threads, which can outlive the pool.
  const std::shared_ptr<State> state_;
};

}  // namespace os
