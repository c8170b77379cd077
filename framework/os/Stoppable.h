#pragma once

#include <chrono>
#include <cstddef>

#include "framework/os/Clock.h"

namespace os {

/// Something with threads of its own that `stopAll` ends.
class Stoppable {
 public:
  Stoppable(const Stoppable&) = delete;
  Stoppable& operator=(const Stoppable&) = delete;

 protected:
  /// The order in which `stopAll` goes: sources of work first.
  enum class Stage { kTimers, kQueues, kPools };

  explicit Stoppable(Stage stage);
  virtual ~Stoppable() = default;

  /// From here on `stopAll` may call `stop`. The last thing that a constructor does.
  void enlist();

  /// On return `stopAll` is not inside `stop` and will not call it again. The first thing that a
  /// destructor does; harmless when never enlisted.
  void withdraw();

 private:
  friend std::size_t stopAll(std::chrono::milliseconds limit);

  /// Takes no more work and waits until `deadline` for what is under way. Returns the number of
  /// threads that are still busy.
  virtual std::size_t stop(Clock::TimePoint deadline) = 0;

  /// Stops the members of one stage in turn. Returns the number of threads that are still busy.
  static std::size_t stopStage(Stage stage, Clock::TimePoint deadline);

  const Stage stage_;
};

/// Stops the timers, then every reactive queue, then every thread pool, and waits until `limit` has
/// passed for what is under way. Returns the number of threads that are still busy: those of tasks
/// that never return. With 0 the program may end as usual; otherwise it leaves by std::quick_exit
/// or std::_Exit. Called once, by the program, when it ends; not from a task, timer or queue.
std::size_t stopAll(std::chrono::milliseconds limit);

}  // namespace os
