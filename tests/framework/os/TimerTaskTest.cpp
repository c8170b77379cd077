#include "framework/os/TimerTask.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
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

class Ticker final : public TimerTask {
 public:
  explicit Ticker(
      unsigned interval, std::function<void()> onTick = [] {})
      : TimerTask(interval), onTick_(std::move(onTick)) {}
  ~Ticker() override { cancel(); }

  [[nodiscard]] int ticks() const { return ticks_; }

 private:
  void onTimer() override {
    ++ticks_;
    onTick_();
  }

  const std::function<void()> onTick_;
  std::atomic<int> ticks_{0};
};

class TimerTaskTest : public ::testing::Test {
 protected:
  /// Moves on by `by`, at which the earliest timer is due, and waits until the timer thread waits
  /// for the tick after it.
  void tick(milliseconds by, milliseconds next) {
    ASSERT_TRUE(clock_.waitForDeadline(by));
    clock_.advance(by);
    ASSERT_TRUE(clock_.waitForDeadline(next));
  }

  ManualClock clock_;
};

TEST_F(TimerTaskTest, BeforeSubmit_HasNoHandle) {
  Ticker timer(120000);
  EXPECT_EQ(timer.handle(), -1);
  EXPECT_EQ(timer.interval(), 120000U);
  timer.reset();
  timer.cancel();
  EXPECT_EQ(timer.handle(), -1);
}

TEST_F(TimerTaskTest, Submitted_TicksOnceAnInterval) {
  Ticker timer(120000);
  timer.submit();
  EXPECT_GE(timer.handle(), 0);
  ASSERT_TRUE(clock_.waitForDeadline(milliseconds(120000)));
  clock_.advance(milliseconds(119999));
  ASSERT_TRUE(clock_.waitForDeadline(milliseconds(1)));
  EXPECT_EQ(timer.ticks(), 0);
  tick(milliseconds(1), milliseconds(120000));
  EXPECT_EQ(timer.ticks(), 1);
  tick(milliseconds(120000), milliseconds(120000));
  EXPECT_EQ(timer.ticks(), 2);
}

TEST_F(TimerTaskTest, SubmittedTwice_KeepsItsHandleAndItsTime) {
  Ticker timer(1000);
  timer.submit();
  const int handle = timer.handle();
  ASSERT_TRUE(clock_.waitForDeadline(milliseconds(1000)));
  clock_.advance(milliseconds(400));
  timer.submit();
  EXPECT_EQ(timer.handle(), handle);
  tick(milliseconds(600), milliseconds(1000));
  EXPECT_EQ(timer.ticks(), 1);
}

TEST_F(TimerTaskTest, Reset_CountsTheNewIntervalFromNow) {
  Ticker timer(120000);
  timer.submit();
  ASSERT_TRUE(clock_.waitForDeadline(milliseconds(120000)));
  clock_.advance(milliseconds(100000));
  timer.setInterval(5000);
  timer.reset();
  tick(milliseconds(5000), milliseconds(5000));
  EXPECT_EQ(timer.ticks(), 1);
}

TEST_F(TimerTaskTest, NewIntervalWithoutReset_AppliesAfterTheNextTick) {
  Ticker timer(1000);
  timer.submit();
  timer.setInterval(300);
  tick(milliseconds(1000), milliseconds(300));
  EXPECT_EQ(timer.ticks(), 1);
}

TEST_F(TimerTaskTest, Cancelled_NeverTicksAgain) {
  Ticker timer(1000);
  Ticker other(1000);
  timer.submit();
  other.submit();
  tick(milliseconds(1000), milliseconds(1000));
  timer.cancel();
  EXPECT_EQ(timer.handle(), -1);
  tick(milliseconds(1000), milliseconds(1000));
  EXPECT_EQ(other.ticks(), 2);
  EXPECT_EQ(timer.ticks(), 1);
}

TEST_F(TimerTaskTest, SubmittedAfterCancel_TicksAgain) {
  Ticker timer(1000);
  timer.submit();
  timer.cancel();
  timer.submit();
  tick(milliseconds(1000), milliseconds(1000));
  EXPECT_EQ(timer.ticks(), 1);
}

TEST_F(TimerTaskTest, SeveralTimers_TickAtTheirOwnTimes) {
  std::vector<char> order;
  Ticker slow(300, [&] { order.push_back('s'); });
  Ticker fast(200, [&] { order.push_back('f'); });
  slow.submit();
  fast.submit();
  tick(milliseconds(200), milliseconds(100));
  tick(milliseconds(100), milliseconds(100));
  tick(milliseconds(100), milliseconds(200));
  EXPECT_EQ(order, (std::vector<char>{'f', 's', 'f'}));
}

TEST_F(TimerTaskTest, ZeroInterval_TicksEachMillisecond) {
  Ticker timer(0);
  timer.submit();
  tick(milliseconds(1), milliseconds(1));
  EXPECT_EQ(timer.ticks(), 1);
}

TEST_F(TimerTaskTest, ManyIntervalsPassAtOnce_OneTick) {
  Ticker timer(1000);
  timer.submit();
  ASSERT_TRUE(clock_.waitForDeadline(milliseconds(1000)));
  clock_.advance(milliseconds(10500));
  ASSERT_TRUE(clock_.waitForDeadline(milliseconds(1000)));
  EXPECT_EQ(timer.ticks(), 1);
}

TEST_F(TimerTaskTest, TickThatThrows_IsLoggedAndTheTimerGoesOn) {
  const test_support::LogCapture capture;
  Ticker timer(1000, [] { throw std::runtime_error("no zone"); });
  timer.submit();
  tick(milliseconds(1000), milliseconds(1000));
  tick(milliseconds(1000), milliseconds(1000));
  EXPECT_EQ(capture.count(8, "A timer's tick ended by an exception: no zone"), 2U);
}

TEST_F(TimerTaskTest, CancelFromItsOwnTick_ReturnsAndStopsIt) {
  WaitableEvent cancelled;
  Ticker* self = nullptr;
  Ticker timer(1000, [&] {
    self->cancel();
    cancelled.set();
  });
  self = &timer;
  timer.submit();
  ASSERT_TRUE(clock_.waitForDeadline(milliseconds(1000)));
  clock_.advance(milliseconds(1000));
  EXPECT_EQ(cancelled.wait(kNoLimit), 0U);
  EXPECT_EQ(timer.handle(), -1);
}

TEST_F(TimerTaskTest, DeletedByItsOwnTick_IsFine) {
  WaitableEvent deleted;
  Ticker* self = nullptr;
  self = new Ticker(1000, [&deleted, &self] {
    WaitableEvent& event = deleted;
    delete self;
    event.set();
  });
  self->submit();
  ASSERT_TRUE(clock_.waitForDeadline(milliseconds(1000)));
  clock_.advance(milliseconds(1000));
  EXPECT_EQ(deleted.wait(kNoLimit), 0U);
}

TEST_F(TimerTaskTest, CancelWhileATickIsUnderWay_WaitsForItsEnd) {
  WaitableEvent entered;
  WaitableEvent letGo;
  std::atomic<bool> ended{false};
  Ticker timer(1000, [&] {
    entered.set();
    EXPECT_EQ(letGo.wait(kNoLimit), 0U);
    ended = true;
  });
  timer.submit();
  ASSERT_TRUE(clock_.waitForDeadline(milliseconds(1000)));
  clock_.advance(milliseconds(1000));
  ASSERT_EQ(entered.wait(kNoLimit), 0U);
  std::jthread canceller([&] {
    timer.cancel();
    EXPECT_TRUE(ended);
  });
  while (timer.handle() != -1) {
    std::this_thread::yield();
  }
  letGo.set();
}

TEST(TimerTaskOnTheRealClock, Submitted_Ticks) {
  WaitableEvent ticked;
  Ticker timer(1, [&] { ticked.set(); });
  timer.submit();
  EXPECT_EQ(ticked.wait(kNoLimit), 0U);
}

void startAndStop() {
  for (int round = 0; round < 200; ++round) {
    Ticker timer(1);
    timer.submit();
    timer.setInterval(2);
    timer.reset();
    if (round % 2 == 0) {
      timer.cancel();
    }
  }
}

TEST(TimerTaskOnTheRealClock, ManyThreadsStartStopAndReset_LaterTimersStillTick) {
  {
    std::vector<std::jthread> threads;
    for (int id = 0; id < 4; ++id) {
      threads.emplace_back(startAndStop);
    }
  }
  WaitableEvent ticked;
  Ticker timer(1, [&] { ticked.set(); });
  timer.submit();
  EXPECT_EQ(ticked.wait(kNoLimit), 0U);
}

}  // namespace
}  // namespace os
