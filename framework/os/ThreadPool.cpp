#include "framework/os/ThreadPool.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <limits>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include "framework/core_log/Log.h"

namespace os {

struct ThreadPool::State {
  State(unsigned initialThreads, unsigned maximumThreads, unsigned minimumThreads)
      : initial(initialThreads), maximum(maximumThreads), minimum(minimumThreads) {}

  static void start(const std::shared_ptr<State>& state, unsigned count);
  void serve();
  bool waitForTask(std::unique_lock<std::mutex>& lock);
  unsigned reserveThreads();
  void retire();
  int nextId();

  const unsigned initial;
  const unsigned maximum;
  const unsigned minimum;

  mutable std::mutex mutex;
  std::condition_variable work;   // a task was queued, or the pool was shut down
  std::condition_variable ended;  // a thread came to its end
  // Guarded by mutex.
  std::deque<TaskPtr> queue;
  unsigned threads = 0;  // alive or about to start
  unsigned idle = 0;     // of those, without a task
  int lastId = 0;
  bool active = false;
  bool stopping = false;
  bool abandoned = false;  // a shutdown ran out of time
};

/// Starts threads that reserveThreads has counted. Called without the lock.
void ThreadPool::State::start(const std::shared_ptr<State>& state, unsigned count) {
  for (; count > 0; --count) {
    try {
      std::thread([state] { state->serve(); }).detach();
    } catch (const std::system_error& error) {
      core_log::logPrintf(__func__, core_log::serviceLevel(), 8,
                          "A thread of the pool cannot be started: %s", error.what());
      const std::lock_guard<std::mutex> guard(state->mutex);
      state->retire();
    }
  }
}

/// One thread's life. It is counted as idle from the start.
void ThreadPool::State::serve() {
  std::unique_lock<std::mutex> lock(mutex);
  while (waitForTask(lock)) {
    TaskPtr task = std::move(queue.front());
    queue.pop_front();
    --idle;
    lock.unlock();
    runTask(*task);
    task.reset();
    lock.lock();
    ++idle;
  }
  retire();
}

/// True with a task to take, false when this thread is to end.
bool ThreadPool::State::waitForTask(std::unique_lock<std::mutex>& lock) {
  const auto isCalled = [this] {
    return stopping || !queue.empty();
  };
  while (!isCalled()) {
    if (threads <= minimum) {
      work.wait(lock, isCalled);
      continue;
    }
    Clock& clock = Clock::instance();
    const bool called = clock.waitUntil(work, lock, clock.now() + kIdleTime, isCalled);
    if (!called && threads > minimum) {
      return false;
    }
  }
  return !stopping;
}

/// Counts the threads that the queued tasks lack, as far as the maximum allows.
unsigned ThreadPool::State::reserveThreads() {
  const std::size_t lacking = queue.size() > idle ? queue.size() - idle : 0;
  const auto count = static_cast<unsigned>(std::min<std::size_t>(lacking, maximum - threads));
  threads += count;
  idle += count;
  return count;
}

void ThreadPool::State::retire() {
  --threads;
  --idle;
  ended.notify_all();
}

int ThreadPool::State::nextId() {
  lastId = lastId == std::numeric_limits<int>::max() ? 1 : lastId + 1;
  return lastId;
}

ThreadPool::ThreadPool(unsigned initial, unsigned maximum, unsigned minimum, bool startNow)
    : Stoppable(Stage::kPools), state_(std::make_shared<State>(initial, maximum, minimum)) {
  if (maximum == 0 || maximum < initial || maximum < minimum) {
    throw std::invalid_argument("thread pool: the maximum is 0 or below the initial or minimum");
  }
  if (startNow) {
    activate();
  }
  enlist();
}

ThreadPool::~ThreadPool() {
  withdraw();
  const std::deque<TaskPtr> dropped = close();
  std::unique_lock<std::mutex> lock(state_->mutex);
  state_->ended.wait(lock, [this] { return state_->abandoned || state_->threads == 0; });
}

void ThreadPool::activate() {
  unsigned count = 0;
  {
    const std::lock_guard<std::mutex> guard(state_->mutex);
    if (state_->active || state_->stopping) {
      return;
    }
    state_->active = true;
    state_->threads = state_->idle = state_->initial;
    count = state_->initial + state_->reserveThreads();
  }
  State::start(state_, count);
}

int ThreadPool::submit(Task* task, int copies) {
  TaskPtr owned(task);
  if (task == nullptr || copies < 1) {
    return -1;
  }
  std::deque<TaskPtr> batch;
  for (int copy = 1; copy < copies; ++copy) {
    TaskPtr clone(task->clone());
    if (!clone) {
      break;
    }
    batch.push_back(std::move(clone));
  }
  batch.push_front(std::move(owned));
  return enqueue(std::move(batch));
}

/// Queues all of a submission or none. Returns the first one's id, or -1.
int ThreadPool::enqueue(std::deque<TaskPtr> batch) {
  int first = -1;
  unsigned count = 0;
  {
    const std::lock_guard<std::mutex> guard(state_->mutex);
    if (state_->stopping) {
      return -1;
    }
    for (TaskPtr& task : batch) {
      task->id_ = state_->nextId();
      first = first == -1 ? task->id_ : first;
      state_->queue.push_back(std::move(task));
      state_->work.notify_one();
    }
    count = state_->active ? state_->reserveThreads() : 0;
  }
  State::start(state_, count);
  return first;
}

bool ThreadPool::shutdown(std::chrono::milliseconds limit) {
  return stop(Clock::instance().now() + limit) == 0;
}

std::size_t ThreadPool::stop(Clock::TimePoint deadline) {
  const std::deque<TaskPtr> dropped = close();
  std::unique_lock<std::mutex> lock(state_->mutex);
  const bool allEnded = Clock::instance().waitUntil(state_->ended, lock, deadline,
                                                    [this] { return state_->threads == 0; });
  state_->abandoned = !allEnded;
  return state_->threads;
}

/// Returns the tasks that have not begun, for the caller to free without the lock.
std::deque<TaskPtr> ThreadPool::close() {
  const std::lock_guard<std::mutex> guard(state_->mutex);
  state_->stopping = true;
  state_->work.notify_all();
  return std::exchange(state_->queue, {});
}

unsigned ThreadPool::threadCount() const {
  const std::lock_guard<std::mutex> guard(state_->mutex);
  return state_->threads;
}

}  // namespace os
