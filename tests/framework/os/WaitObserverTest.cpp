#include "framework/os/WaitObserver.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

#include "framework/os/WaitableEvent.h"

namespace os {
namespace {

class Observer final : public WaitObserver {
 public:
  void onWait() noexcept override {
    ++waits;
    thread = std::this_thread::get_id();
    if (toSet != nullptr) {
      toSet->set();
    }
  }

  int waits = 0;
  std::thread::id thread;
  WaitableEvent* toSet = nullptr;
};

class WaitObserverTest : public testing::Test {
 protected:
  WaitObserverTest() { WaitObserver::observeThisThread(observer_); }
  ~WaitObserverTest() override { WaitObserver::observeThisThread({}); }

  std::shared_ptr<Observer> observer_ = std::make_shared<Observer>();
  WaitableEvent event_;
};

TEST_F(WaitObserverTest, WaitThatBlocks_IsAnnouncedOnItsThreadBeforeItBlocks) {
  observer_->toSet = &event_;
  EXPECT_EQ(event_.wait(WaitableEvent::kNoLimit), 0U);
  EXPECT_EQ(observer_->waits, 1);
  EXPECT_EQ(observer_->thread, std::this_thread::get_id());
}

TEST_F(WaitObserverTest, WaitWithALimit_IsAnnounced) {
  EXPECT_EQ(event_.wait(1), 1U);
  EXPECT_EQ(observer_->waits, 1);
}

TEST_F(WaitObserverTest, WaitThatNeedsNotBlock_IsNotAnnounced) {
  EXPECT_EQ(event_.wait(0), 1U);
  event_.set();
  EXPECT_EQ(event_.wait(20000), 0U);
  EXPECT_EQ(observer_->waits, 0);
}

TEST_F(WaitObserverTest, AnotherThreadsWait_IsNotAnnounced) {
  std::jthread([this] { EXPECT_EQ(event_.wait(1), 1U); }).join();
  EXPECT_EQ(observer_->waits, 0);
}

TEST_F(WaitObserverTest, ObserverThatIsGone_NobodyIsTold) {
  observer_.reset();
  EXPECT_EQ(event_.wait(1), 1U);
}

TEST_F(WaitObserverTest, AnotherObserver_TakesThePlaceOfTheFormer) {
  const auto other = std::make_shared<Observer>();
  WaitObserver::observeThisThread(other);
  EXPECT_EQ(event_.wait(1), 1U);
  EXPECT_EQ(observer_->waits, 0);
  EXPECT_EQ(other->waits, 1);
}

}  // namespace
}  // namespace os
