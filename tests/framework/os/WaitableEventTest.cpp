#include "framework/os/WaitableEvent.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include "tests/support/ManualClock.h"
#include "tests/support/WaitWatch.h"

namespace os {
namespace {

using std::chrono::milliseconds;
using test_support::ManualClock;
using test_support::WaitWatch;

TEST(WaitableEvent, SetBeforeWait_IsNotLost) {
  WaitableEvent event;
  event.set();
  EXPECT_EQ(event.wait(20000), 0U);
  EXPECT_EQ(event.wait(4294967295U), 0U);
}

TEST(WaitableEvent, Set_StaysSetForLaterWaits) {
  WaitableEvent event;
  event.set();
  EXPECT_EQ(event.wait(0), 0U);
  EXPECT_EQ(event.wait(0), 0U);
}

TEST(WaitableEvent, NeverSet_ZeroTimesOutAtOnce) {
  WaitableEvent event;
  EXPECT_EQ(event.wait(0), 1U);
}

TEST(WaitableEvent, NeverSet_TimesOutOnTheRealClock) {
  WaitableEvent event;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(event.wait(5), 1U);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(5));
}

TEST(WaitableEvent, Reset_ClosesTheLatch) {
  WaitableEvent event;
  event.set();
  event.reset();
  EXPECT_EQ(event.wait(0), 1U);
  event.set();
  EXPECT_EQ(event.wait(0), 0U);
}

TEST(WaitableEvent, TwentySecondsPass_TimesOutOnTheLastMillisecond) {
  ManualClock clock;
  WaitableEvent event;
  auto waiter = std::async(std::launch::async, [&] { return event.wait(20000); });
  ASSERT_TRUE(clock.waitForDeadline(milliseconds(20000)));
  clock.advance(milliseconds(19999));
  ASSERT_TRUE(clock.waitForDeadline(milliseconds(1)));
  clock.advance(milliseconds(1));
  EXPECT_EQ(waiter.get(), 1U);
}

TEST(WaitableEvent, SetBeforeTheTimeOut_ReturnsZero) {
  ManualClock clock;
  WaitableEvent event;
  auto waiter = std::async(std::launch::async, [&] { return event.wait(20000); });
  ASSERT_TRUE(clock.waitForDeadline(milliseconds(20000)));
  event.set();
  EXPECT_EQ(waiter.get(), 0U);
}

TEST(WaitableEvent, LargestLimitedTimeOut_IsALimit) {
  ManualClock clock;
  WaitableEvent event;
  auto waiter = std::async(std::launch::async, [&] { return event.wait(4294967294U); });
  ASSERT_TRUE(clock.waitForDeadline(milliseconds(4294967294)));
  clock.advance(milliseconds(4294967294));
  EXPECT_EQ(waiter.get(), 1U);
}

TEST(WaitableEvent, NoLimit_OutlivesAnyTime) {
  ManualClock clock;
  WaitableEvent event;
  WaitWatch watch;
  auto waiter = std::async(std::launch::async, [&] {
    watch.watchThisThread();
    return event.wait(4294967295U);
  });
  ASSERT_TRUE(watch.waitUntilWaiting());
  // A limit, wherever it is counted from, would be over: the largest one is fifty days.
  for (int year = 0; year < 100; ++year) {
    clock.advance(std::chrono::hours(24 * 365));
    std::this_thread::yield();
  }
  event.set();
  EXPECT_EQ(waiter.get(), 0U);
}

TEST(WaitableEvent, SeveralWaiters_AllReturn) {
  ManualClock clock;
  WaitableEvent event;
  unsigned results[3] = {7, 7, 7};
  {
    std::jthread a([&] { results[0] = event.wait(1000); });
    std::jthread b([&] { results[1] = event.wait(2000); });
    std::jthread c([&] { results[2] = event.wait(3000); });
    ASSERT_TRUE(clock.waitForWaiters(3));
    clock.advance(milliseconds(1000));
    a.join();
    event.set();
  }
  EXPECT_EQ(results[0], 1U);
  EXPECT_EQ(results[1], 0U);
  EXPECT_EQ(results[2], 0U);
}

TEST(WaitableEvent, Set_PublishesWhatTheSetterWrote) {
  WaitableEvent event;
  int answer = 0;
  std::jthread setter([&] {
    answer = 42;
    event.set();
  });
  ASSERT_EQ(event.wait(4294967295U), 0U);
  EXPECT_EQ(answer, 42);
}

TEST(WaitableEvent, DestroyedAsSoonAsWaitReturns_IsFine) {
  for (int round = 0; round < 2000; ++round) {
    auto event = std::make_unique<WaitableEvent>();
    std::jthread setter([shared = event.get()] { shared->set(); });
    ASSERT_EQ(event->wait(round % 2 == 0 ? 4294967295U : 20000U), 0U);
    event.reset();
  }
}

TEST(WaitableEvent, DestroyedAsSoonAsTheClockReleasesIt_IsFine) {
  ManualClock clock;
  for (int round = 0; round < 500; ++round) {
    std::jthread waiter([] {
      auto event = std::make_unique<WaitableEvent>();
      EXPECT_EQ(event->wait(20000), 1U);
      event.reset();
    });
    ASSERT_TRUE(clock.waitForDeadline(milliseconds(20000)));
    clock.advance(milliseconds(20000));
  }
}

TEST(WaitableEvent, ClockGoesWhileAThreadWaits_TheWaitTimesOut) {
  WaitableEvent event;
  std::future<unsigned> waiter;
  {
    ManualClock clock;
    waiter = std::async(std::launch::async, [&] { return event.wait(20000); });
    ASSERT_TRUE(clock.waitForWaiters(1));
  }
  EXPECT_EQ(waiter.get(), 1U);
}

}  // namespace
}  // namespace os
