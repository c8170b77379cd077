#include "dme/store/CommitQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <future>
#include <mutex>
#include <thread>

#include "tests/support/LogCapture.h"
#include "tests/support/ManualClock.h"

namespace dme {
namespace {

using testing::ElementsAre;

/// Stands for the disk: records what it is given, and waits or fails when told to.
class Disk {
 public:
  CommitQueue::Write writer() {
    return [this](const ChangeSet& changes) {
      return write(changes);
    };
  }

  void hold() {
    const std::lock_guard lock(mutex_);
    isHeld_ = true;
  }
  void release() {
    const std::lock_guard lock(mutex_);
    isHeld_ = false;
    changed_.notify_all();
  }
  void waitUntilWriting() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isWriting_; });
  }
  void setFailing(bool isFailing) {
    const std::lock_guard lock(mutex_);
    isFailing_ = isFailing;
  }
  /// The values of each successful write, in order.
  std::vector<std::vector<std::int64_t>> writes() {
    const std::lock_guard lock(mutex_);
    return writes_;
  }

 private:
  Result<void> write(const ChangeSet& changes) {
    std::unique_lock lock(mutex_);
    isWriting_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !isHeld_; });
    isWriting_ = false;
    if (isFailing_) {
      return failure("disk full");
    }
    std::vector<std::int64_t> values;
    for (const auto& [dn, change] : changes.objects()) {
      if (!change.className.empty()) {
        values.push_back(-1);
      }
      for (const auto& [property, value] : change.values) {
        values.push_back(std::get<std::int64_t>(value));
      }
    }
    writes_.push_back(std::move(values));
    return {};
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  bool isHeld_ = false;
  bool isWriting_ = false;
  bool isFailing_ = false;
  std::vector<std::vector<std::int64_t>> writes_;
};

ChangeSet value(const std::string& dn, std::int64_t number) {
  ChangeSet changes;
  changes.set(dn, "p", number);
  return changes;
}
ChangeSet object(const std::string& dn, std::int64_t number) {
  ChangeSet changes;
  changes.create(dn, "slot");
  changes.set(dn, "p", number);
  return changes;
}

/// Queues a transaction; the future tells its outcome.
std::future<bool> submit(CommitQueue& queue, ChangeSet changes) {
  auto outcome = std::make_shared<std::promise<bool>>();
  queue.submit(std::move(changes),
               [outcome](const Result<void>& result) { outcome->set_value(result.has_value()); });
  return outcome->get_future();
}

TEST(CommitQueue, OneTransaction_IsReportedAfterItsWrite) {
  Disk disk;
  CommitQueue queue(disk.writer());
  disk.hold();
  std::future<bool> done = submit(queue, value("a", 1));
  disk.waitUntilWriting();
  EXPECT_EQ(done.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
  disk.release();
  EXPECT_TRUE(done.get());
  EXPECT_THAT(disk.writes(), ElementsAre(ElementsAre(1)));
}

TEST(CommitQueue, ManyWhileTheDiskIsBusy_ShareOneWriteOfTheLastValues) {
  Disk disk;
  CommitQueue queue(disk.writer());
  disk.hold();
  std::vector<std::future<bool>> done;
  done.push_back(submit(queue, value("a", 0)));
  disk.waitUntilWriting();
  for (int i = 1; i <= 50; ++i) {
    done.push_back(submit(queue, value(i % 2 == 0 ? "a" : "b", i)));
  }
  disk.release();
  for (std::future<bool>& each : done) {
    EXPECT_TRUE(each.get());
  }
  EXPECT_THAT(disk.writes(), ElementsAre(ElementsAre(0), ElementsAre(50, 49)));
  EXPECT_EQ(queue.counters().transactions, 51u);
  EXPECT_EQ(queue.counters().commits, 2u);
}

TEST(CommitQueue, NoChangesAndAllDurable_IsReportedAtOnce) {
  Disk disk;
  CommitQueue queue(disk.writer());
  bool isDone = false;
  queue.submit({}, [&](const Result<void>& outcome) { isDone = outcome.has_value(); });
  EXPECT_TRUE(isDone);
  EXPECT_TRUE(disk.writes().empty());
}

TEST(CommitQueue, NoChangesBehindAnUnfinishedWrite_WaitsForIt) {
  Disk disk;
  CommitQueue queue(disk.writer());
  disk.hold();
  submit(queue, value("a", 1));
  disk.waitUntilWriting();
  std::future<bool> barrier = submit(queue, {});
  EXPECT_EQ(barrier.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
  disk.release();
  EXPECT_TRUE(barrier.get());
  EXPECT_THAT(disk.writes(), ElementsAre(ElementsAre(1)));
}

TEST(CommitQueue, FailedWrite_FailsItsTransactionsAndIsMadeUpByTheNext) {
  const test_support::ManualClock clock;  // the retry does not come by itself
  const test_support::LogCapture log;
  Disk disk;
  CommitQueue queue(disk.writer());
  disk.setFailing(true);
  EXPECT_FALSE(submit(queue, object("a", 1)).get());
  EXPECT_FALSE(submit(queue, value("a", 2)).get());
  EXPECT_FALSE(submit(queue, value("b", 3)).get());
  EXPECT_FALSE(submit(queue, {}).get()) << "told durable while nothing was";
  EXPECT_TRUE(queue.counters().isBehind);
  disk.setFailing(false);
  EXPECT_TRUE(submit(queue, value("c", 4)).get());
  EXPECT_FALSE(queue.counters().isBehind);
  // The object before its property, and of the property the last value only.
  EXPECT_THAT(disk.writes(), ElementsAre(ElementsAre(-1, 2, 3, 4)));
  EXPECT_EQ(queue.counters().failures, 4u);
  EXPECT_EQ(log.count(8, "changes cannot be stored (disk full): they are kept and tried again"),
            1u);
  EXPECT_TRUE(log.contains(5, "changes are stored again"));
}

TEST(CommitQueue, FailedWriteAndNothingNew_IsTriedAgainAfterASecond) {
  test_support::ManualClock clock;
  const test_support::LogCapture log;
  Disk disk;
  CommitQueue queue(disk.writer());
  disk.setFailing(true);
  EXPECT_FALSE(submit(queue, value("a", 1)).get());
  disk.setFailing(false);
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(1000)));
  clock.advance(std::chrono::milliseconds(1000));
  EXPECT_TRUE(log.waitFor(5, "changes are stored again"));
  EXPECT_THAT(disk.writes(), ElementsAre(ElementsAre(1)));
}

TEST(CommitQueue, Stopped_HasWrittenWhatWaitedAndRefusesMore) {
  Disk disk;
  CommitQueue queue(disk.writer());
  disk.hold();
  std::future<bool> first = submit(queue, value("a", 1));
  disk.waitUntilWriting();
  std::future<bool> second = submit(queue, value("a", 2));
  std::thread stopper([&] { queue.stop(); });
  disk.release();
  stopper.join();
  EXPECT_TRUE(first.get());
  EXPECT_TRUE(second.get());
  EXPECT_FALSE(submit(queue, value("a", 3)).get());
  EXPECT_FALSE(submit(queue, {}).get());
}

TEST(CommitQueue, StoppedWhileBehind_TriesOnceMore) {
  const test_support::ManualClock clock;
  Disk disk;
  CommitQueue queue(disk.writer());
  disk.setFailing(true);
  EXPECT_FALSE(submit(queue, value("a", 1)).get());
  disk.setFailing(false);
  queue.stop();
  EXPECT_THAT(disk.writes(), ElementsAre(ElementsAre(1)));
}

TEST(CommitQueue, StoppedWhileTheDiskStaysBroken_EndsAndSaysWhatIsLost) {
  const test_support::ManualClock clock;
  const test_support::LogCapture log;
  Disk disk;
  CommitQueue queue(disk.writer());
  disk.setFailing(true);
  EXPECT_FALSE(submit(queue, value("a", 1)).get());
  queue.stop();
  EXPECT_TRUE(disk.writes().empty());
  EXPECT_TRUE(log.contains(8,
                           "changes of 1 objects could not be stored and end with this process; "
                           "nobody was told that they are stored"));
}

TEST(CommitQueue, ManyThreads_GetEachTransactionReportedOnce) {
  Disk disk;
  CommitQueue queue(disk.writer());
  std::atomic<int> reported{0};
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&, thread] {
      for (int i = 0; i < 250; ++i) {
        queue.submit(value(std::to_string(thread * 250 + i), i),
                     [&](const Result<void>&) { ++reported; });
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  queue.stop();
  EXPECT_EQ(reported, 1000);
  std::size_t written = 0;
  for (const auto& write : disk.writes()) {
    written += write.size();
  }
  EXPECT_EQ(written, 1000u);
}

}  // namespace
}  // namespace dme
