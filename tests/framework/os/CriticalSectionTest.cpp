#include "framework/os/CriticalSection.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "framework/os/WaitableEvent.h"
#include "tests/support/LogCapture.h"

namespace os {
namespace {

void awaitWaiters(const CriticalSection& section, unsigned count) {
  while (section.waiterCount() != count) {
    std::this_thread::yield();
  }
}

bool isFreeForAnother(CriticalSection& section) {
  bool isFree = false;
  section.lock();
  section.unlock();
  std::jthread([&] { isFree = !section.isHeldByCaller(); }).join();
  return isFree;
}

TEST(CriticalSection, Fresh_IsHeldByNobody) {
  CriticalSection section;
  EXPECT_FALSE(section.isHeldByCaller());
  EXPECT_EQ(section.waiterCount(), 0U);
}

TEST(CriticalSection, Locked_IsHeldByTheCallerOnly) {
  CriticalSection section;
  section.lock();
  EXPECT_TRUE(section.isHeldByCaller());
  std::jthread([&] { EXPECT_FALSE(section.isHeldByCaller()); }).join();
  section.unlock();
  EXPECT_FALSE(section.isHeldByCaller());
}

TEST(CriticalSection, TakenThreeTimes_IsReleasedByTheThirdUnlock) {
  CriticalSection section;
  section.lock();
  section.lock();
  section.lock();
  std::jthread other([&] {
    const CriticalSection::Guard guard(section);
    EXPECT_TRUE(section.isHeldByCaller());
  });
  awaitWaiters(section, 1);
  section.unlock();
  EXPECT_EQ(section.waiterCount(), 1U);
  section.unlock();
  EXPECT_TRUE(section.isHeldByCaller());
  EXPECT_EQ(section.waiterCount(), 1U);
  section.unlock();
  EXPECT_FALSE(section.isHeldByCaller());
}

TEST(CriticalSection, SeveralWaiters_AreServedInTheOrderTheyCame) {
  CriticalSection section;
  std::vector<int> order;  // guarded by section
  section.lock();
  std::vector<std::jthread> threads;
  for (int id = 0; id < 8; ++id) {
    threads.emplace_back([&section, &order, id] {
      const CriticalSection::Guard guard(section);
      order.push_back(id);
    });
    awaitWaiters(section, static_cast<unsigned>(id) + 1);
  }
  section.unlock();
  threads.clear();
  EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST(CriticalSection, HolderTakesItAgainAtOnce_QueuesBehindTheWaiter) {
  CriticalSection section;
  std::vector<char> order;  // guarded by section
  section.lock();
  std::jthread waiter([&] {
    const CriticalSection::Guard guard(section);
    order.push_back('w');
  });
  awaitWaiters(section, 1);
  section.unlock();
  section.lock();
  order.push_back('h');
  section.unlock();
  waiter.join();
  EXPECT_EQ(order, (std::vector<char>{'w', 'h'}));
}

TEST(CriticalSection, ManyThreads_NeverTwoInside) {
  CriticalSection section;
  int count = 0;  // guarded by section
  std::vector<std::jthread> threads;
  for (int id = 0; id < 4; ++id) {
    threads.emplace_back([&] {
      for (int i = 0; i < 2000; ++i) {
        const CriticalSection::Guard outer(section);
        const CriticalSection::Guard inner(section);
        ++count;
      }
    });
  }
  threads.clear();
  EXPECT_EQ(count, 8000);
}

TEST(CriticalSection, UnlockByAThreadThatDoesNotHoldIt_IsLoggedAndHasNoEffect) {
  const test_support::LogCapture capture;
  CriticalSection section;
  section.unlock();
  section.lock();
  std::jthread([&] { section.unlock(); }).join();
  EXPECT_TRUE(section.isHeldByCaller());
  section.unlock();
  EXPECT_EQ(capture.count(8, "A critical section is released by a thread that does not hold it"),
            2U);
  EXPECT_TRUE(isFreeForAnother(section));
}

TEST(CriticalSection, DestroyedWhileHeldByTheCaller_IsFine) {
  auto section = std::make_unique<CriticalSection>();
  section->lock();
  section->lock();
  section.reset();
}

TEST(CriticalSection, GuardReleased_LeavesTheSectionHeld) {
  CriticalSection section;
  {
    CriticalSection::Guard guard(section);
    guard.release();
  }
  EXPECT_TRUE(section.isHeldByCaller());
}

// A thread stores its answer under the section, sets the event and releases the section; the one
// that waited takes the section, never gives it back, and destroys all of it.
TEST(CriticalSection, DestroyedByTheNextOwnerWhileTheLastOneReleases_IsFine) {
  struct WaitObject {
    WaitableEvent event;
    CriticalSection lock;
    int answer = 0;  // guarded by lock
  };
  for (int round = 0; round < 2000; ++round) {
    auto object = std::make_unique<WaitObject>();
    WaitObject* const shared = object.get();
    shared->lock.lock();
    WaitableEvent isHeld;
    std::jthread answering([shared, &isHeld, round] {
      isHeld.set();
      shared->lock.lock();
      shared->answer = round;
      shared->event.set();
      shared->lock.unlock();
    });
    ASSERT_EQ(isHeld.wait(WaitableEvent::kNoLimit), 0U);
    shared->lock.unlock();
    ASSERT_EQ(object->event.wait(WaitableEvent::kNoLimit), 0U);
    object->lock.lock();
    ASSERT_EQ(object->answer, round);
    object.reset();
  }
}

TEST(CriticalSectionDeathTest, DestroyedWhileAnotherThreadHoldsIt_Aborts) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        std::optional<CriticalSection> section(std::in_place);
        std::jthread([&] { section->lock(); }).join();
        section.reset();
      },
      "A critical section is destroyed while another thread holds it");
}

TEST(CriticalSectionDeathTest, DestroyedWhileAnotherThreadWaitsForIt_Aborts) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        std::optional<CriticalSection> section(std::in_place);
        section->lock();
        std::thread([&] { section->lock(); }).detach();
        awaitWaiters(*section, 1);
        section.reset();
      },
      "A critical section is destroyed while another thread waits for it");
}

}  // namespace
}  // namespace os
