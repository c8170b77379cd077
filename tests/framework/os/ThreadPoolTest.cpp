#include "framework/os/ThreadPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "framework/os/Stoppable.h"
#include "framework/os/WaitableEvent.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ManualClock.h"

namespace os {
namespace {

using std::chrono::milliseconds;
using test_support::ManualClock;

constexpr unsigned kNoLimit = 4294967295U;

class Job final : public Task {
 public:
  explicit Job(std::function<void()> work, std::atomic<int>* freed = nullptr)
      : work_(std::move(work)), freed_(freed) {}
  ~Job() override {
    if (freed_ != nullptr) {
      ++*freed_;
    }
  }

  void run() override { work_(); }

 private:
  const std::function<void()> work_;
  std::atomic<int>* const freed_;
};

class Cloneable final : public Task {
 public:
  Cloneable(std::atomic<int>& runs, int clones) : runs_(runs), clones_(clones) {}
  void run() override { ++runs_; }
  [[nodiscard]] Task* clone() const override {
    return clones_-- > 0 ? new Cloneable(runs_, 0) : nullptr;
  }

 private:
  std::atomic<int>& runs_;
  mutable int clones_;
};

/// Tasks that stay in run until they are let go.
class Gate {
 public:
  ~Gate() { open(); }
  Task* task() {
    return new Job([this] {
      ++entered_;
      entered_.notify_all();
      EXPECT_EQ(opened_.wait(kNoLimit), 0U);
    });
  }
  void open() { opened_.set(); }
  void awaitEntered(int count) {
    for (int now = entered_; now < count; now = entered_) {
      entered_.wait(now);
    }
  }

 private:
  std::atomic<int> entered_{0};
  WaitableEvent opened_;
};

TEST(ThreadPool, StartNow_RunsTheInitialThreads) {
  const ThreadPool pool(5, 10, 5, true);
  EXPECT_EQ(pool.threadCount(), 5U);
}

TEST(ThreadPool, NotStarted_QueuesUntilActivate) {
  ThreadPool pool(8, 32, 8, false);
  WaitableEvent done;
  EXPECT_EQ(pool.submit(new Job([&] { done.set(); })), 1);
  EXPECT_EQ(pool.threadCount(), 0U);
  pool.activate();
  EXPECT_EQ(done.wait(kNoLimit), 0U);
  EXPECT_EQ(pool.threadCount(), 8U);
}

TEST(ThreadPool, ActivateTwice_StartsTheThreadsOnce) {
  ThreadPool pool(2, 4, 2, false);
  pool.activate();
  pool.activate();
  EXPECT_EQ(pool.threadCount(), 2U);
}

TEST(ThreadPool, MoreTasksThanInitialThreadsWereQueued_ActivateStartsEnough) {
  Gate gate;
  ThreadPool pool(1, 3, 1, false);
  for (int i = 0; i < 5; ++i) {
    pool.submit(gate.task());
  }
  pool.activate();
  gate.awaitEntered(3);
  EXPECT_EQ(pool.threadCount(), 3U);
  gate.open();
}

TEST(ThreadPool, BadSizes_AreRefused) {
  EXPECT_THROW(ThreadPool(0, 0, 0, true), std::invalid_argument);
  EXPECT_THROW(ThreadPool(3, 2, 0, true), std::invalid_argument);
  EXPECT_THROW(ThreadPool(0, 2, 3, true), std::invalid_argument);
}

TEST(ThreadPool, Submit_NumbersTheTasksFromOne) {
  ThreadPool pool(1, 1, 1, true);
  int seen = 0;
  WaitableEvent done;
  EXPECT_EQ(pool.submit(new Job([] {}), 1), 1);
  EXPECT_EQ(pool.submit(new Job([] {}), 1), 2);
  struct Self final : Task {
    Self(int& id, WaitableEvent& event) : id_(id), event_(event) {}
    void run() override {
      id_ = id();
      event_.set();
    }
    int& id_;
    WaitableEvent& event_;
  };
  EXPECT_EQ(pool.submit(new Self(seen, done)), 3);
  EXPECT_EQ(done.wait(kNoLimit), 0U);
  EXPECT_EQ(seen, 3);
}

TEST(ThreadPool, OneThread_RunsTheTasksInOrder) {
  std::vector<int> order;
  {
    ThreadPool pool(1, 1, 1, false);
    WaitableEvent done;
    for (int i = 0; i < 100; ++i) {
      pool.submit(new Job([&order, i] { order.push_back(i); }));
    }
    pool.submit(new Job([&] { done.set(); }));
    pool.activate();
    EXPECT_EQ(done.wait(kNoLimit), 0U);
  }
  ASSERT_EQ(order.size(), 100U);
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(ThreadPool, Copies_RunsTheTaskAndItsClones) {
  std::atomic<int> runs{0};
  ThreadPool pool(1, 1, 1, false);
  EXPECT_EQ(pool.submit(new Cloneable(runs, 9), 3), 1);
  EXPECT_EQ(pool.submit(new Cloneable(runs, 1), 3), 4);  // runs out of clones after one
  WaitableEvent done;
  EXPECT_EQ(pool.submit(new Job([&] { done.set(); })), 6);
  pool.activate();
  EXPECT_EQ(done.wait(kNoLimit), 0U);
  EXPECT_EQ(runs, 5);
}

TEST(ThreadPool, NullTaskOrNoCopies_IsRefusedAndFreed) {
  std::atomic<int> freed{0};
  ThreadPool pool(1, 1, 1, true);
  EXPECT_EQ(pool.submit(nullptr), -1);
  EXPECT_EQ(pool.submit(new Job([] {}, &freed), 0), -1);
  EXPECT_EQ(freed, 1);
}

TEST(ThreadPool, EveryThreadBusy_GrowsToTheMaximumAndNoFurther) {
  Gate gate;
  ThreadPool pool(1, 3, 1, true);
  std::atomic<bool> fourthRan{false};
  for (int i = 0; i < 3; ++i) {
    pool.submit(gate.task());
  }
  gate.awaitEntered(3);
  pool.submit(new Job([&] { fourthRan = true; }));
  EXPECT_EQ(pool.threadCount(), 3U);
  EXPECT_FALSE(fourthRan);
  gate.open();
  EXPECT_TRUE(pool.shutdown(milliseconds(30000)));
}

TEST(ThreadPool, ThreadsThatAreFree_NoGrowth) {
  ThreadPool pool(2, 8, 2, true);
  for (int i = 0; i < 50; ++i) {
    WaitableEvent done;
    pool.submit(new Job([&] { done.set(); }));
    ASSERT_EQ(done.wait(kNoLimit), 0U);
  }
  EXPECT_LE(pool.threadCount(), 3U);  // a thread may not be back from its task yet
}

TEST(ThreadPool, IdleThreadsBeyondTheMinimum_EndAfterTheIdleTime) {
  ManualClock clock;
  Gate gate;
  ThreadPool pool(1, 4, 2, true);
  for (int i = 0; i < 4; ++i) {
    pool.submit(gate.task());
  }
  gate.awaitEntered(4);
  gate.open();
  ASSERT_TRUE(clock.waitForWaiters(4));
  clock.advance(milliseconds(9999));
  ASSERT_TRUE(clock.waitForDeadline(milliseconds(1))) << "the idle time is not ten seconds";
  EXPECT_EQ(pool.threadCount(), 4U);
  clock.advance(milliseconds(1));
  while (pool.threadCount() != 2) {
    std::this_thread::yield();
  }
  WaitableEvent done;
  pool.submit(new Job([&] { done.set(); }));
  EXPECT_EQ(done.wait(kNoLimit), 0U);
  EXPECT_EQ(pool.threadCount(), 2U);
}

TEST(ThreadPool, TaskThatThrows_IsLoggedAndFreedAndTheThreadGoesOn) {
  const test_support::LogCapture capture;
  std::atomic<int> freed{0};
  ThreadPool pool(1, 1, 1, true);
  pool.submit(new Job([] { throw std::runtime_error("no blade"); }, &freed));
  WaitableEvent done;
  pool.submit(new Job([&] { done.set(); }));
  EXPECT_EQ(done.wait(kNoLimit), 0U);
  EXPECT_EQ(freed, 1);
  EXPECT_TRUE(capture.contains(8, "Task 1 ended by an exception: no blade"));
}

TEST(ThreadPool, TaskThatSubmits_IsServed) {
  ThreadPool pool(1, 1, 1, true);
  WaitableEvent done;
  pool.submit(new Job([&] { pool.submit(new Job([&] { done.set(); })); }));
  EXPECT_EQ(done.wait(kNoLimit), 0U);
}

TEST(ThreadPool, Shutdown_FreesWhatHasNotBegunAndRefusesMore) {
  std::atomic<int> freed{0};
  std::atomic<int> ran{0};
  Gate gate;
  ThreadPool pool(1, 1, 1, true);
  pool.submit(gate.task());
  gate.awaitEntered(1);
  pool.submit(new Job([&] { ++ran; }, &freed));
  EXPECT_FALSE(pool.shutdown(milliseconds(0)));
  EXPECT_EQ(freed, 1);
  EXPECT_EQ(pool.submit(new Job([&] { ++ran; }, &freed)), -1);
  EXPECT_EQ(freed, 2);
  gate.open();
  EXPECT_TRUE(pool.shutdown(milliseconds(30000)));
  EXPECT_EQ(pool.threadCount(), 0U);
  EXPECT_EQ(ran, 0);
}

TEST(ThreadPool, ShutdownOfAPoolThatNeverStarted_FreesItsTasks) {
  std::atomic<int> freed{0};
  ThreadPool pool(1, 1, 1, false);
  pool.submit(new Job([] {}, &freed));
  EXPECT_TRUE(pool.shutdown(milliseconds(0)));
  EXPECT_EQ(freed, 1);
  pool.activate();
  EXPECT_EQ(pool.threadCount(), 0U);
}

TEST(ThreadPool, Destroyed_WaitsForTheRunningTask) {
  std::atomic<bool> ended{false};
  WaitableEvent running;
  {
    ThreadPool pool(1, 1, 1, true);
    pool.submit(new Job([&] {
      running.set();
      EXPECT_EQ(WaitableEvent().wait(10), 1U);
      ended = true;
    }));
    ASSERT_EQ(running.wait(kNoLimit), 0U);
  }
  EXPECT_TRUE(ended);
}

TEST(ThreadPool, DestroyedAfterAShutdownThatRanOutOfTime_LeavesTheBusyThread) {
  WaitableEvent letGo;
  WaitableEvent left;
  {
    ThreadPool pool(1, 1, 1, true);
    WaitableEvent running;
    pool.submit(new Job([&] {
      running.set();
      EXPECT_EQ(letGo.wait(kNoLimit), 0U);
      left.set();
    }));
    ASSERT_EQ(running.wait(kNoLimit), 0U);
    EXPECT_FALSE(pool.shutdown(milliseconds(0)));
  }
  letGo.set();
  EXPECT_EQ(left.wait(kNoLimit), 0U);
}

void submitHundred(ThreadPool& pool, const std::function<Task*()>& make,
                   std::atomic<int>& accepted) {
  for (int i = 0; i < 100; ++i) {
    accepted += pool.submit(make()) > 0 ? 1 : 0;
  }
}

void shutDownUnderLoad() {
  std::atomic<int> freed{0};
  std::atomic<int> ran{0};
  std::atomic<int> accepted{0};
  const auto make = [&] {
    return new Job([&ran] { ++ran; }, &freed);
  };
  ThreadPool pool(1, 4, 1, true);
  std::vector<std::jthread> submitters;
  for (int id = 0; id < 4; ++id) {
    submitters.emplace_back([&] { submitHundred(pool, make, accepted); });
  }
  while (ran < 10) {
    std::this_thread::yield();
  }
  EXPECT_TRUE(pool.shutdown(milliseconds(30000)));
  submitters.clear();
  EXPECT_EQ(freed, 400);
  EXPECT_LE(ran, accepted);
}

TEST(ThreadPool, ManySubmittersWhileItShutsDown_EveryTaskIsFreedOnce) {
  for (int round = 0; round < 20; ++round) {
    shutDownUnderLoad();
  }
}

/// What the gateway's five workers do.
void runFiveTasksThatNeverReturn() {
  auto* const gate = new Gate;
  auto* const pool = new ThreadPool(5, 10, 5, true);
  for (int i = 0; i < 5; ++i) {
    pool->submit(gate->task());
  }
  gate->awaitEntered(5);
}

TEST(ThreadPoolDeathTest, FiveTasksNeverReturn_TheProcessEnds) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        runFiveTasksThatNeverReturn();
        std::_Exit(stopAll(milliseconds(1)) == 5 ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST(ThreadPoolDeathTest, FiveTasksNeverReturn_OrdinaryExitIsNotHeldUp) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        runFiveTasksThatNeverReturn();
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace os
