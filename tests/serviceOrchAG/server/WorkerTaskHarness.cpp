#include "tests/serviceOrchAG/server/WorkerTaskHarness.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>

#include "framework/os/Clock.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "tests/support/RunningWorker.h"

namespace zan_serviceOrchAG::worker_task_test {

using testing::IsEmpty;

namespace {

/// Ends every wait for a deadline at once and counts them.
class PauseCounter final : public os::Clock {
 public:
  TimePoint now() const override { return TimePoint(); }

  bool waitUntil(std::condition_variable& /*condition*/, std::unique_lock<std::mutex>& /*lock*/,
                 TimePoint /*deadline*/, const std::function<bool()>& predicate) override {
    ++pauses;
    return predicate();
  }

  std::atomic<int> pauses = 0;
};

}  // namespace

WorkerTaskTest::WorkerTaskTest() {
  handler_.registerCommands();
  createSMAClient("3", "h", "1", true);
  log_.clear();
}

void WorkerTaskTest::serve(bool left) {
  const test_support::RunningWorker worker(channels_, 0, left);
  ASSERT_TRUE(channels_.waitForIdleWorkers(1));
}

int WorkerTaskTest::serveCountingPauses() {
  // Never freed: a thread may be about to wait on it.
  static PauseCounter& clock = *new PauseCounter;
  clock.pauses = 0;
  os::Clock* const previous = os::Clock::install(&clock);
  serve();
  os::Clock::install(previous);
  return clock.pauses;
}

std::vector<LogLine> WorkerTaskTest::requestLines() const {
  const LogLine waiting{1, "run", "Worker 0 waiting to receive message from SMA."};
  const std::vector<LogLine> lines = log_.lines();
  const auto first = std::find(lines.begin(), lines.end(), waiting);
  const auto second = std::find(first + 1, lines.end(), waiting);
  EXPECT_NE(lines.end(), second) << "the worker did not come back";
  return {first + 1, second};
}

std::size_t WorkerTaskTest::waits() const {
  return log_.count(1, "Worker 0 waiting to receive message from SMA.");
}

void WorkerTaskTest::expectDropped() {
  EXPECT_THAT(channels_.sent(), IsEmpty());
  EXPECT_EQ(2U, waits()) << "the worker must wait for the next request";
}

}  // namespace zan_serviceOrchAG::worker_task_test
