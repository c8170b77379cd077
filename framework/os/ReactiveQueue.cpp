#include "framework/os/ReactiveQueue.h"

#include <exception>
#include <stdexcept>
#include <utility>

#include "framework/core_log/Log.h"

namespace os {

ReactiveQueue::ReactiveQueue(Doer* doer, Deduplicator* deduplicator, bool startNow)
    : Stoppable(Stage::kQueues), doer_(doer), deduplicator_(deduplicator) {
  if (doer == nullptr) {
    throw std::invalid_argument("reactive queue: no doer");
  }
  if (startNow) {
    activate();
  }
  enlist();
}

ReactiveQueue::~ReactiveQueue() {
  withdraw();
  close();
  if (thread_.joinable()) {
    thread_.join();
  }
}

void ReactiveQueue::activate() {
  const std::lock_guard<std::mutex> guard(mutex_);
  if (thread_.joinable() || stopping_) {
    return;
  }
  thread_ = std::thread([this] { drain(); });
  draining_ = true;
}

bool ReactiveQueue::submit(Task* item) {
  TaskPtr owned(item);
  if (item == nullptr || (deduplicator_ != nullptr && !deduplicator_->enter(*item))) {
    return false;
  }
  {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (!stopping_) {
      items_.push_back(std::move(owned));
      changed_.notify_all();
      return true;
    }
  }
  leave(*item);
  return false;
}

std::size_t ReactiveQueue::size() const {
  const std::lock_guard<std::mutex> guard(mutex_);
  return items_.size();
}

std::size_t ReactiveQueue::stop(Clock::TimePoint deadline) {
  close();
  std::unique_lock<std::mutex> lock(mutex_);
  const bool ended =
      Clock::instance().waitUntil(changed_, lock, deadline, [this] { return !draining_; });
  return ended ? 0 : 1;
}

/// Takes no more items and frees those that wait.
void ReactiveQueue::close() {
  std::deque<TaskPtr> dropped;
  {
    const std::lock_guard<std::mutex> guard(mutex_);
    stopping_ = true;
    dropped.swap(items_);
    changed_.notify_all();
  }
  for (const TaskPtr& item : dropped) {
    leave(*item);
  }
}

void ReactiveQueue::drain() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (true) {
    changed_.wait(lock, [this] { return stopping_ || !items_.empty(); });
    if (stopping_) {
      break;
    }
    TaskPtr item = std::move(items_.front());
    items_.pop_front();
    lock.unlock();
    leave(*item);
    handOver(std::move(item));
    lock.lock();
  }
  draining_ = false;
  changed_.notify_all();
}

void ReactiveQueue::handOver(TaskPtr item) {
  try {
    (*doer_)(std::move(item));
  } catch (const std::exception& exception) {
    core_log::logPrintf(__func__, core_log::serviceLevel(), 8,
                        "The doer of a queue ended by an exception: %s", exception.what());
  } catch (...) {
    core_log::logPrintf(__func__, core_log::serviceLevel(), 8,
                        "The doer of a queue ended by an exception: not a std::exception");
  }
}

void ReactiveQueue::leave(const Task& item) {
  if (deduplicator_ != nullptr) {
    deduplicator_->leave(item);
  }
}

}  // namespace os
