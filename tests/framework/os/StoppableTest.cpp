#include "framework/os/Stoppable.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "framework/os/ReactiveQueue.h"
#include "framework/os/ThreadPool.h"
#include "framework/os/TimerTask.h"
#include "framework/os/WaitableEvent.h"
#include "tests/support/ManualClock.h"

namespace os {
namespace {

using std::chrono::milliseconds;

constexpr unsigned kNoLimit = 4294967295U;

class Member final : private Stoppable {
 public:
  using Stop = std::function<std::size_t(Clock::TimePoint)>;

  static Member timers(Stop stop) { return Member(Stage::kTimers, std::move(stop)); }
  static Member queues(Stop stop) { return Member(Stage::kQueues, std::move(stop)); }
  static Member pools(Stop stop) { return Member(Stage::kPools, std::move(stop)); }

  ~Member() override { withdraw(); }

 private:
  Member(Stage stage, Stop stop) : Stoppable(stage), stop_(std::move(stop)) { enlist(); }
  std::size_t stop(Clock::TimePoint deadline) override { return stop_(deadline); }

  const Stop stop_;
};

TEST(StopAll, Members_AreStoppedByStageWithOneDeadlineAndTheirBusyThreadsAdded) {
  test_support::ManualClock clock;
  std::vector<std::string> order;
  std::vector<Clock::TimePoint> deadlines;
  const auto record = [&](const char* name, std::size_t busy) {
    return [&order, &deadlines, name, busy](Clock::TimePoint deadline) {
      order.emplace_back(name);
      deadlines.push_back(deadline);
      return busy;
    };
  };
  const Member pool = Member::pools(record("pool", 5));
  const Member queue = Member::queues(record("queue", 1));
  const Member timer = Member::timers(record("timer", 0));
  const Clock::TimePoint expected = clock.now() + milliseconds(3000);
  EXPECT_EQ(stopAll(milliseconds(3000)), 6U);
  EXPECT_EQ(order, (std::vector<std::string>{"timer", "queue", "pool"}));
  EXPECT_EQ(deadlines, (std::vector<Clock::TimePoint>(3, expected)));
}

TEST(StopAll, NothingLives_IsZero) {
  EXPECT_EQ(stopAll(milliseconds(0)), 0U);
}

TEST(StopAll, MemberGoneBefore_IsNotStopped) {
  int stops = 0;
  {
    const Member member = Member::pools([&](Clock::TimePoint) {
      ++stops;
      return std::size_t{0};
    });
  }
  EXPECT_EQ(stopAll(milliseconds(0)), 0U);
  EXPECT_EQ(stops, 0);
}

TEST(StopAll, MemberGoesWhileItIsBeingStopped_ItsDestructorWaits) {
  WaitableEvent entered;
  WaitableEvent letGo;
  std::atomic<bool> stopped{false};
  std::jthread stopper;
  std::jthread helper;
  {
    const Member member = Member::pools([&](Clock::TimePoint) {
      entered.set();
      EXPECT_EQ(letGo.wait(kNoLimit), 0U);
      stopped = true;
      return std::size_t{0};
    });
    stopper = std::jthread([] { stopAll(milliseconds(0)); });
    ASSERT_EQ(entered.wait(kNoLimit), 0U);
    helper = std::jthread([&] { letGo.set(); });
  }
  EXPECT_TRUE(stopped);
}

class Ticker final : public TimerTask {
 public:
  Ticker() : TimerTask(1000) {}
  ~Ticker() override { cancel(); }

 private:
  void onTimer() override {}
};

class Runner final : public Doer {
 public:
  void operator()(TaskPtr item) override { runTask(*item); }
};

TEST(StopAll, IdleTimerQueueAndPool_AllEnd) {
  Ticker timer;
  timer.submit();
  Runner runner;
  ReactiveQueue queue(&runner, nullptr, true);
  ThreadPool pool(2, 2, 2, true);
  EXPECT_EQ(stopAll(milliseconds(30000)), 0U);
  EXPECT_EQ(timer.handle(), -1);
  EXPECT_EQ(pool.threadCount(), 0U);
}

TEST(StopAll, QueueWhoseDoerIsStuck_CountsAsBusy) {
  class Stuck final : public Doer {
   public:
    void operator()(TaskPtr /*item*/) override {
      entered.set();
      EXPECT_EQ(letGo.wait(kNoLimit), 0U);
    }
    WaitableEvent entered;
    WaitableEvent letGo;
  };
  class Nothing final : public Task {
   public:
    void run() override {}
  };
  Stuck stuck;
  ReactiveQueue queue(&stuck, nullptr, true);
  queue.submit(new Nothing);
  ASSERT_EQ(stuck.entered.wait(kNoLimit), 0U);
  EXPECT_EQ(stopAll(milliseconds(0)), 1U);
  stuck.letGo.set();
}

}  // namespace
}  // namespace os
