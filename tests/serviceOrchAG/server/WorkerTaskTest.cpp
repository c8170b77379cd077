#include "serviceOrchAG/server/WorkerTask.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/serviceOrchAG/server/WorkerTaskHarness.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RunningWorker.h"

namespace zan_serviceOrchAG::worker_task_test {
namespace {

using test_support::ManualClock;
using test_support::RunningWorker;
using testing::ElementsAre;
using testing::IsEmpty;

// ----- Set-up -----------------------------------------------------------------------------------

TEST_F(WorkerTaskTest, AsATask_CarriesNothingAndIsNotCopied) {
  WorkerTask task(1, true);
  EXPECT_EQ(-1, task.id());
  EXPECT_EQ(nullptr, task.clone());
  EXPECT_EQ(nullptr, task.getPayload());
  int payload = 0;
  task.setPayload(&payload);
  EXPECT_EQ(nullptr, task.getPayload());
  log_.clear();
  task.logTaskInfo();
  task.onExit();
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(WorkerTaskTest, Left_ServesAtItsEndPointWithoutTimeLimit) {
  ScriptedChannel fresh;
  const RunningWorker worker(fresh, 2, true);
  ASSERT_TRUE(fresh.waitForIdleWorkers(1));
  EXPECT_THAT(fresh.events(),
              ElementsAre("create ZEDServiceOrchAGChannel 5", "server tcp://127.0.0.1:5557",
                          "worker inproc://worker-end-point", "receive -1"));
  EXPECT_TRUE(log_.contains(5, "Starting worker 2"));
  EXPECT_TRUE(log_.contains(1, "Worker 2 waiting to receive message from SMA."));
}

TEST_F(WorkerTaskTest, Right_ServesAtTheOtherEndPoint) {
  ScriptedChannel fresh;
  const RunningWorker worker(fresh, 2, false);
  ASSERT_TRUE(fresh.waitForIdleWorkers(1));
  EXPECT_EQ("server tcp://127.0.0.1:6557", fresh.events()[1]);
}

struct SetUpFailure {
  std::function<void()> action;
  const char* text;
};

class SetUpFailures : public WorkerTaskTest, public testing::WithParamInterface<SetUpFailure> {
 protected:
  ManualClock clock_;
};

std::string setUpLine(const std::string& text) {
  return "run : An exception occurred while setting up server or worker end point: " + text;
}

TEST_P(SetUpFailures, EachAttempt_LogsOneLineAndTheNextComesASecondLater) {
  ScriptedChannel fresh;
  for (int attempt = 0; attempt < 3; ++attempt) {
    fresh.onServerEndPoint(GetParam().action);
  }
  const RunningWorker worker(fresh, 0, true);
  for (std::size_t attempt = 1; attempt <= 3; ++attempt) {
    ASSERT_TRUE(clock_.waitForDeadline(std::chrono::seconds(1)));
    EXPECT_EQ(attempt, log_.count(8, setUpLine(GetParam().text)));
    EXPECT_EQ(attempt, log_.count(5, "Starting worker 0"));
    EXPECT_EQ(0U, fresh.alive()) << "the channel of a failed attempt is closed";
    clock_.advance(std::chrono::seconds(1));
  }
  ASSERT_TRUE(fresh.waitForIdleWorkers(1));
  EXPECT_EQ(3U, log_.count(8, setUpLine(GetParam().text)));
}

INSTANTIATE_TEST_SUITE_P(
    All, SetUpFailures,
    testing::Values(SetUpFailure{throws(std::runtime_error("Address already in use")),
                                 "Address already in use"},
                    SetUpFailure{throws(std::string("text")), "text"},
                    SetUpFailure{throws<const char*>("plain text"), "plain text"},
                    SetUpFailure{throws(7), "unknown exception"}));

TEST_F(WorkerTaskTest, ChannelOrWorkerEndPointFails_IsTriedAgainToo) {
  ManualClock clock;
  ScriptedChannel fresh;
  fresh.onCreate(throws(std::bad_alloc()));
  fresh.onWorkerEndPoint(throws(std::runtime_error("no such group")));
  const RunningWorker worker(fresh, 0, true);
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::seconds(1)));
  EXPECT_EQ(1U, log_.count(8, setUpLine("std::bad_alloc")));
  EXPECT_EQ(0U, log_.count(5, "Starting worker 0"));
  clock.advance(std::chrono::seconds(1));
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::seconds(1)));
  EXPECT_EQ(1U, log_.count(8, setUpLine("no such group")));
  clock.advance(std::chrono::seconds(1));
  ASSERT_TRUE(fresh.waitForIdleWorkers(1));
}

// ----- Threads ----------------------------------------------------------------------------------

TEST_F(WorkerTaskTest, FiveWorkers_ServeEachRequestOnce) {
  for (int request = 0; request < 200; ++request) {
    Parts parts = heartbeat();
    parts[2] = std::to_string(request);
    channels_.onReceive(parts);
  }
  {
    std::vector<std::unique_ptr<RunningWorker>> workers;
    for (int number = 0; number < 5; ++number) {
      workers.push_back(std::make_unique<RunningWorker>(channels_, number, true));
    }
    ASSERT_TRUE(channels_.waitForSent(200));
    ASSERT_TRUE(channels_.waitForIdleWorkers(5));
  }
  std::vector<int> ids;
  for (const auto& reply : channels_.sent()) {
    ids.push_back(std::stoi(reply.parts[2]));
  }
  std::sort(ids.begin(), ids.end());
  for (int request = 0; request < 200; ++request) {
    EXPECT_EQ(request, ids[static_cast<std::size_t>(request)]);
  }
}

}  // namespace
}  // namespace zan_serviceOrchAG::worker_task_test
