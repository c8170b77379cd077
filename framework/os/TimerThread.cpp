#include "framework/os/TimerThread.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <limits>

#include "framework/core_log/Log.h"
#include "framework/os/TimerTask.h"

namespace os {
namespace {

std::chrono::milliseconds intervalOf(const TimerTask& timer) {
  return std::chrono::milliseconds(std::max(timer.interval(), 1U));
}

}  // namespace

TimerThread& TimerThread::instance() {
  static TimerThread* const thread = new TimerThread;
  return *thread;
}

TimerThread::TimerThread() : Stoppable(Stage::kTimers) {
  enlist();
}

void TimerThread::add(TimerTask& timer) {
  const std::lock_guard<std::mutex> guard(mutex_);
  if (timer.handle_ != -1) {
    return;
  }
  startThread();
  const int handle = nextHandle();
  entries_.emplace(handle, Entry{&timer, Clock::instance().now() + intervalOf(timer)});
  timer.handle_ = handle;
  ++version_;
  changed_.notify_all();
}

void TimerThread::reset(TimerTask& timer) {
  const std::lock_guard<std::mutex> guard(mutex_);
  const auto entry = entries_.find(timer.handle_);
  if (entry == entries_.end()) {
    return;
  }
  entry->second.due = Clock::instance().now() + intervalOf(timer);
  ++version_;
  changed_.notify_all();
}

void TimerThread::remove(TimerTask& timer) {
  std::unique_lock<std::mutex> lock(mutex_);
  entries_.erase(timer.handle_);
  timer.handle_ = -1;
  ++version_;
  changed_.notify_all();
  if (thread_ != std::this_thread::get_id()) {
    changed_.wait(lock, [this, &timer] { return ticking_ != &timer; });
  }
}

std::size_t TimerThread::stop(Clock::TimePoint deadline) {
  std::unique_lock<std::mutex> lock(mutex_);
  for (auto& [handle, entry] : entries_) {
    entry.timer->handle_ = -1;
  }
  entries_.clear();
  ++version_;
  changed_.notify_all();
  const bool quiet =
      Clock::instance().waitUntil(changed_, lock, deadline, [this] { return ticking_ == nullptr; });
  return quiet ? 0 : 1;
}

void TimerThread::startThread() {
  if (thread_ != std::thread::id()) {
    return;
  }
  std::thread thread([this] { run(); });
  thread_ = thread.get_id();
  thread.detach();
}

void TimerThread::run() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (true) {
    const unsigned long seen = version_;
    const auto isChanged = [this, seen] {
      return version_ != seen;
    };
    const auto next =
        std::min_element(entries_.begin(), entries_.end(),
                         [](const auto& a, const auto& b) { return a.second.due < b.second.due; });
    if (next == entries_.end()) {
      changed_.wait(lock, isChanged);
      continue;
    }
    Clock& clock = Clock::instance();
    const Clock::TimePoint now = clock.now();
    if (next->second.due <= now) {
      tick(lock, next->second, now);
    } else {
      clock.waitUntil(changed_, lock, next->second.due, isChanged);
    }
  }
}

void TimerThread::tick(std::unique_lock<std::mutex>& lock, Entry& entry, Clock::TimePoint now) {
  TimerTask& timer = *entry.timer;
  const std::chrono::milliseconds interval = intervalOf(timer);
  entry.due += interval;
  if (entry.due <= now) {
    entry.due = now + interval;
  }
  ticking_ = &timer;
  lock.unlock();
  try {
    timer.onTimer();
  } catch (const std::exception& exception) {
    core_log::logPrintf("onTimer", core_log::serviceLevel(), 8,
                        "A timer's tick ended by an exception: %s", exception.what());
  } catch (...) {
    core_log::logPrintf("onTimer", core_log::serviceLevel(), 8,
                        "A timer's tick ended by an exception: not a std::exception");
  }
  lock.lock();
  ticking_ = nullptr;
  changed_.notify_all();
}

int TimerThread::nextHandle() {
  do {
    lastHandle_ = lastHandle_ == std::numeric_limits<int>::max() ? 0 : lastHandle_ + 1;
  } while (entries_.contains(lastHandle_));
  return lastHandle_;
}

}  // namespace os
