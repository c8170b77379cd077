#pragma once

#include <atomic>

namespace os {

class TimerThread;

/// A periodic timer. All timers of the process share one thread, which starts with the first
/// `submit`; a tick that takes long delays the other timers.
///
/// All operations are thread-safe and may be called from `onTimer`, on this timer and on others.
class TimerTask {
 public:
  /// `interval` in milliseconds; 0 counts as 1. The timer does not run before `submit`.
  explicit TimerTask(unsigned interval);

  /// Cancels. A class that derives calls `cancel` in its own destructor: here its part is gone
  /// already, and a tick under way would find it gone.
  virtual ~TimerTask();

  TimerTask(const TimerTask&) = delete;
  TimerTask& operator=(const TimerTask&) = delete;

  /// Starts ticking: the first tick comes one interval from now. No effect on a timer that ticks.
  /// Throws std::system_error when the timer thread cannot be started.
  void submit();

  /// Counts the interval, which may be a new one, from now on. No effect before `submit`.
  void reset();

  /// Stops ticking. On return `onTimer` does not run and will not, unless it is `onTimer` that
  /// calls. Blocks while a tick is under way on another thread.
  void cancel();

  /// For the ticks after the next one, or after `reset`.
  void setInterval(unsigned interval);
  [[nodiscard]] unsigned interval() const;

  /// A number of its own while the timer ticks, -1 otherwise.
  [[nodiscard]] int handle() const;

 protected:
  /// One tick, on the timer thread. An exception is logged at level 8; the timer goes on. Ticks
  /// that were missed because a tick took long are not made up for.
  virtual void onTimer() = 0;

 private:
  friend class TimerThread;

  std::atomic<unsigned> interval_;
  std::atomic<int> handle_{-1};  // written under the timer thread's lock
};

}  // namespace os
