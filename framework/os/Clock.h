#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace os {

/// The one source of time for everything that waits: steady, never set back. A test installs a
/// clock of its own and so decides how fast twenty seconds pass.
class Clock {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  using Duration = std::chrono::steady_clock::duration;

  virtual ~Clock() = default;

  /// The clock in use. Ask each time: it can change. Thread-safe.
  static Clock& instance();

  /// Installs `clock` for the process and returns the one before; null stands for the machine's own
  /// clock. Borrowed for the rest of the process: a thread may be about to wait on a clock that has
  /// just been replaced.
  static Clock* install(Clock* clock);

  [[nodiscard]] virtual TimePoint now() const = 0;

  /// Waits on `condition` until `predicate` holds or `deadline` is reached, whichever comes first.
  /// `lock` is held on entry, on return and whenever the predicate runs; it is released while
  /// waiting. Returns the predicate's value. The condition and the mutex outlive the call. Who
  /// makes the predicate true notifies the condition, as ever.
  virtual bool waitUntil(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                         TimePoint deadline, const std::function<bool()>& predicate) = 0;
};

}  // namespace os
