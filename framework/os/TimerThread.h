#pragma once

#include <condition_variable>
#include <cstddef>
#include <map>
#include <mutex>
#include <thread>

#include "framework/os/Clock.h"
#include "framework/os/Stoppable.h"

namespace os {

class TimerTask;

/// The thread behind all TimerTasks. Private to this folder. Never destroyed, and without timers it
/// touches nothing but itself, so that it may stay when the process ends.
class TimerThread final : private Stoppable {
 public:
  static TimerThread& instance();

  // See the operations of TimerTask.
  void add(TimerTask& timer);
  void reset(TimerTask& timer);
  void remove(TimerTask& timer);

 private:
  struct Entry {
    TimerTask* timer;
    Clock::TimePoint due;
  };

  TimerThread();

  /// Takes every timer out and waits for the tick under way.
  std::size_t stop(Clock::TimePoint deadline) override;
  void startThread();
  [[noreturn]] void run();
  void tick(std::unique_lock<std::mutex>& lock, Entry& entry, Clock::TimePoint now);
  int nextHandle();

  std::mutex mutex_;
  std::condition_variable changed_;
  // Guarded by mutex_, as are the handles of the timers.
  std::map<int, Entry> entries_;
  unsigned long version_ = 0;           // counts the changes of entries_
  const TimerTask* ticking_ = nullptr;  // whose onTimer runs; may be destroyed by it
  std::thread::id thread_;
  int lastHandle_ = 0;
};

}  // namespace os
