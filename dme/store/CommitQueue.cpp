#include "dme/store/CommitQueue.h"

#include <chrono>
#include <utility>

#include "framework/core_log/Log.h"
#include "framework/os/Clock.h"

namespace dme {

namespace {
constexpr std::chrono::seconds kRetryAfter{1};
}

CommitQueue::CommitQueue(Write write) : write_(std::move(write)), thread_([this] { run(); }) {}

CommitQueue::~CommitQueue() {
  stop();
}

void CommitQueue::submit(ChangeSet changes, Completion done, Tell tell) {
  bool isRefused = false;
  {
    const std::lock_guard lock(mutex_);
    const bool isDurable = waiting_.empty() && !isBusy_ && !isBehind_;
    const bool isToldHere = changes.empty() && isDurable && tell == Tell::kHereAndNow;
    isRefused = isStopping_;
    if (!isRefused && !isToldHere) {
      counters_.transactions += changes.empty() ? 0 : 1;
      waiting_.changes.append(std::move(changes));
      if (done) {
        waiting_.completions.push_back(std::move(done));
      }
      wake_.notify_one();
      return;
    }
  }
  if (done) {
    done(isRefused ? Result<void>(failure("the engine is stopping")) : Result<void>());
  }
}

void CommitQueue::stop() {
  {
    const std::lock_guard lock(mutex_);
    isStopping_ = true;
    wake_.notify_one();
  }
  if (thread_.joinable()) {
    thread_.join();
  }
}

CommitQueue::Counters CommitQueue::counters() const {
  const std::lock_guard lock(mutex_);
  Counters counters = counters_;
  counters.isBehind = isBehind_;
  return counters;
}

void CommitQueue::run() {
  Batch batch;
  while (take(batch)) {
    const Result<void> outcome = write(std::move(batch.changes));
    for (const Completion& done : batch.completions) {
      done(outcome);
    }
    batch = Batch();
  }
  if (!unwritten_.empty()) {
    core_log::logPrintf("run", core_log::serviceLevel(), 8,
                        "changes of %zu objects could not be stored and end with this process; "
                        "nobody was told that they are stored",
                        unwritten_.objects().size());
  }
}

bool CommitQueue::take(Batch& batch) {
  std::unique_lock lock(mutex_);
  isBusy_ = false;
  const auto hasWork = [this] {
    return isStopping_ || !waiting_.empty();
  };
  if (isBehind_) {
    os::Clock& clock = os::Clock::instance();
    clock.waitUntil(wake_, lock, clock.now() + kRetryAfter, hasWork);
  } else {
    wake_.wait(lock, hasWork);
  }
  if (isStopping_ && waiting_.empty()) {
    if (hasStopped_ || !isBehind_) {
      return false;
    }
    hasStopped_ = true;  // the last attempt at what failed before
  }
  std::swap(batch, waiting_);
  isBusy_ = true;
  return true;
}

Result<void> CommitQueue::write(ChangeSet changes) {
  const bool wasBehind = !unwritten_.empty();
  unwritten_.append(std::move(changes));
  const bool isNeeded = !unwritten_.empty();
  Result<void> outcome = isNeeded ? write_(unwritten_) : Result<void>();
  if (outcome) {
    unwritten_.clear();
  }
  if (!outcome && !wasBehind) {
    core_log::logPrintf("write", core_log::serviceLevel(), 8,
                        "changes cannot be stored (%s): they are kept and tried again",
                        outcome.error().text.c_str());
  } else if (outcome && wasBehind) {
    core_log::logPrintf("write", core_log::serviceLevel(), 5, "changes are stored again");
  }
  const std::lock_guard lock(mutex_);
  isBehind_ = !unwritten_.empty();
  counters_.commits += outcome && isNeeded ? 1 : 0;
  counters_.failures += outcome ? 0 : 1;
  return outcome;
}

}  // namespace dme
