#include "framework/os/ReactiveQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "framework/os/Stoppable.h"
#include "framework/os/ThreadPool.h"
#include "framework/os/WaitableEvent.h"
#include "tests/support/LogCapture.h"

namespace os {
namespace {

using std::chrono::milliseconds;

constexpr unsigned kNoLimit = 4294967295U;

class Item final : public Task {
 public:
  explicit Item(int number, std::atomic<int>* freed = nullptr) : number_(number), freed_(freed) {}
  ~Item() override {
    if (freed_ != nullptr) {
      ++*freed_;
    }
  }
  void run() override {}
  [[nodiscard]] int number() const { return number_; }

 private:
  const int number_;
  std::atomic<int>* const freed_;
};

int numberOf(const Task& task) {
  return dynamic_cast<const Item&>(task).number();
}

class Recorder final : public Doer {
 public:
  void operator()(TaskPtr item) override {
    const int number = numberOf(*item);
    if (number < 0) {
      throw std::runtime_error("negative");
    }
    const std::lock_guard<std::mutex> guard(mutex_);
    numbers_.push_back(number);
    if (number == last_) {
      done_.set();
    }
  }

  std::vector<int> awaitNumber(int last) {
    {
      const std::lock_guard<std::mutex> guard(mutex_);
      last_ = last;
      if (!numbers_.empty() && numbers_.back() == last) {
        return numbers_;
      }
    }
    EXPECT_EQ(done_.wait(kNoLimit), 0U);
    const std::lock_guard<std::mutex> guard(mutex_);
    return numbers_;
  }

 private:
  std::mutex mutex_;
  std::vector<int> numbers_;  // guarded by mutex_
  int last_ = -1;             // guarded by mutex_
  WaitableEvent done_;
};

class ByNumber final : public Deduplicator {
 public:
  bool enter(const Task& item) override {
    const std::lock_guard<std::mutex> guard(mutex_);
    return queued_.insert(numberOf(item)).second;
  }
  void leave(const Task& item) override {
    const std::lock_guard<std::mutex> guard(mutex_);
    queued_.erase(numberOf(item));
  }
  [[nodiscard]] std::size_t size() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return queued_.size();
  }

 private:
  mutable std::mutex mutex_;
  std::set<int> queued_;  // guarded by mutex_
};

/// Keeps the queue's thread inside the doer until it is let go.
class Blocking final : public Doer {
 public:
  ~Blocking() override { letGo.set(); }
  void operator()(TaskPtr /*item*/) override {
    entered.set();
    EXPECT_EQ(letGo.wait(kNoLimit), 0U);
  }
  WaitableEvent entered;
  WaitableEvent letGo;
};

TEST(ReactiveQueue, NotStarted_KeepsItemsUntilActivate) {
  Recorder recorder;
  ReactiveQueue queue(&recorder, nullptr, false);
  EXPECT_TRUE(queue.submit(new Item(1)));
  EXPECT_TRUE(queue.submit(new Item(2)));
  EXPECT_EQ(queue.size(), 2U);
  queue.activate();
  queue.activate();
  EXPECT_EQ(recorder.awaitNumber(2), (std::vector<int>{1, 2}));
  EXPECT_EQ(queue.size(), 0U);
}

TEST(ReactiveQueue, StartNow_DrainsAtOnce) {
  Recorder recorder;
  ReactiveQueue queue(&recorder, nullptr, true);
  queue.submit(new Item(1));
  EXPECT_EQ(recorder.awaitNumber(1), (std::vector<int>{1}));
}

TEST(ReactiveQueue, NoDoer_IsRefused) {
  EXPECT_THROW(ReactiveQueue(nullptr, nullptr, false), std::invalid_argument);
}

TEST(ReactiveQueue, NullItem_IsRefused) {
  Recorder recorder;
  ReactiveQueue queue(&recorder, nullptr, false);
  EXPECT_FALSE(queue.submit(nullptr));
  EXPECT_EQ(queue.size(), 0U);
}

TEST(ReactiveQueue, ManyItems_KeepTheirOrder) {
  Recorder recorder;
  ReactiveQueue queue(&recorder, nullptr, true);
  std::vector<int> expected;
  for (int i = 0; i <= 500; ++i) {
    queue.submit(new Item(i));
    expected.push_back(i);
  }
  EXPECT_EQ(recorder.awaitNumber(500), expected);
}

TEST(ReactiveQueue, EqualItemIsQueued_TheSecondIsDroppedAndFreed) {
  std::atomic<int> freed{0};
  Recorder recorder;
  ByNumber byNumber;
  ReactiveQueue queue(&recorder, &byNumber, false);
  EXPECT_TRUE(queue.submit(new Item(1, &freed)));
  EXPECT_FALSE(queue.submit(new Item(1, &freed)));
  EXPECT_EQ(freed, 1);
  EXPECT_TRUE(queue.submit(new Item(2, &freed)));
  queue.activate();
  EXPECT_EQ(recorder.awaitNumber(2), (std::vector<int>{1, 2}));
}

TEST(ReactiveQueue, EqualItemWasHandedOver_TheSecondIsQueued) {
  Blocking blocking;
  ByNumber byNumber;
  ReactiveQueue queue(&blocking, &byNumber, true);
  queue.submit(new Item(1));
  ASSERT_EQ(blocking.entered.wait(kNoLimit), 0U);
  EXPECT_TRUE(queue.submit(new Item(1)));
  EXPECT_FALSE(queue.submit(new Item(1)));
  blocking.letGo.set();
}

TEST(ReactiveQueue, DoerThrows_IsLoggedAndTheNextItemIsServed) {
  const test_support::LogCapture capture;
  std::atomic<int> freed{0};
  Recorder recorder;
  ReactiveQueue queue(&recorder, nullptr, true);
  queue.submit(new Item(-5, &freed));
  queue.submit(new Item(6));
  EXPECT_EQ(recorder.awaitNumber(6), (std::vector<int>{6}));
  EXPECT_EQ(freed, 1);
  EXPECT_TRUE(capture.contains(8, "The doer of a queue ended by an exception: negative"));
}

TEST(ReactiveQueue, Destroyed_FreesItsItemsAndForgetsThem) {
  std::atomic<int> freed{0};
  Recorder recorder;
  ByNumber byNumber;
  {
    ReactiveQueue queue(&recorder, &byNumber, false);
    queue.submit(new Item(1, &freed));
    queue.submit(new Item(2, &freed));
  }
  EXPECT_EQ(freed, 2);
  EXPECT_EQ(byNumber.size(), 0U);
}

TEST(ReactiveQueue, DoerSubmitsToThePool_TheItemRunsThere) {
  class Forwarder final : public Doer {
   public:
    explicit Forwarder(ThreadPool& pool) : pool_(pool) {}
    void operator()(TaskPtr item) override { pool_.submit(item.release()); }

   private:
    ThreadPool& pool_;
  };
  class Ping final : public Task {
   public:
    Ping(WaitableEvent& event, std::thread::id& thread) : event_(event), thread_(thread) {}
    void run() override {
      thread_ = std::this_thread::get_id();
      event_.set();
    }

   private:
    WaitableEvent& event_;
    std::thread::id& thread_;
  };
  ThreadPool pool(1, 1, 1, true);
  Forwarder forwarder(pool);
  ReactiveQueue queue(&forwarder, nullptr, true);
  WaitableEvent done;
  std::thread::id thread;
  queue.submit(new Ping(done, thread));
  EXPECT_EQ(done.wait(kNoLimit), 0U);
  EXPECT_NE(thread, std::thread::id());
  EXPECT_NE(thread, std::this_thread::get_id());
}

void submitFiveHundred(ReactiveQueue& queue, int first, std::atomic<int>& freed) {
  for (int number = first; number < first + 500; ++number) {
    queue.submit(new Item(number, &freed));
  }
}

TEST(ReactiveQueue, ManySubmittersWhileItStops_EveryItemIsFreedOnce) {
  std::atomic<int> freed{0};
  Recorder recorder;
  ByNumber byNumber;
  {
    ReactiveQueue queue(&recorder, &byNumber, true);
    std::vector<std::jthread> submitters;
    for (int id = 0; id < 4; ++id) {
      submitters.emplace_back([&, id] { submitFiveHundred(queue, id * 1000, freed); });
    }
    stopAll(milliseconds(30000));
    EXPECT_FALSE(queue.submit(new Item(9999, &freed)));
  }
  EXPECT_EQ(freed, 2001);
  EXPECT_EQ(byNumber.size(), 0U);
}

}  // namespace
}  // namespace os
