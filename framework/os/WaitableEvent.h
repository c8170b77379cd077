#pragma once

#include <condition_variable>
#include <mutex>

namespace os {

/// A latch between threads: once set, it stays set until it is reset. What the setter wrote before
/// `set` is visible to whoever returns from `wait`.
class WaitableEvent {
 public:
  /// A time-out that never comes.
  static constexpr unsigned kNoLimit = 4294967295U;

  WaitableEvent() = default;

  WaitableEvent(const WaitableEvent&) = delete;
  WaitableEvent& operator=(const WaitableEvent&) = delete;

  /// Releases every waiter, present and future. Never blocks for long. The event may be destroyed
  /// as soon as a `wait` has returned, even if the `set` that ended it has not.
  void set();

  /// Blocks until the event is set or `milliseconds` have passed on os::Clock. Returns 0 when it is
  /// set, also when it was set before; 1 on time-out. Zero asks without blocking. The thread's
  /// WaitObserver is told before it blocks.
  [[nodiscard]] unsigned wait(unsigned milliseconds);

  /// Closes the latch again.
  void reset();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool isSet_ = false;  // guarded by mutex_
};

}  // namespace os
