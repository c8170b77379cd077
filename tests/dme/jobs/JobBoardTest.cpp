#include "dme/jobs/JobBoard.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

namespace dme {
namespace {

JobView view(std::uint64_t id, std::uint64_t revision, JobState state = JobState::kRunning) {
  JobView job;
  job.id = id;
  job.revision = revision;
  job.state = state;
  job.slot = static_cast<std::uint32_t>(id % 4);
  return job;
}

TEST(JobBoard, WhatIsNotStored_IsNotShown) {
  JobBoard board;
  board.settle({{view(1, 1)}, {}}, true);
  board.settle({{view(1, 2)}, {}}, false);
  EXPECT_EQ(board.find(1)->revision, 1u);
  EXPECT_TRUE(board.isBehind());
  // A later transaction is durable with all before it.
  board.settle({{view(2, 1)}, {}}, true);
  EXPECT_EQ(board.find(1)->revision, 2u);
  EXPECT_FALSE(board.isBehind());
}

TEST(JobBoard, Filter_TakesWhatMeetsAllOfIt) {
  JobBoard board;
  for (std::uint64_t id = 1; id <= 8; ++id) {
    board.settle({{view(id, 1, id % 2 == 0 ? JobState::kFailed : JobState::kRunning)}, {}}, true);
  }
  JobFilter filter;
  filter.states = {JobState::kFailed};
  filter.before = 8;
  filter.most = 2;
  std::vector<std::uint64_t> ids;
  for (const JobView& job : board.list(filter)) {
    ids.push_back(job.id);
  }
  EXPECT_EQ(ids, (std::vector<std::uint64_t>{6, 4}));
  filter.slot = 2;
  EXPECT_EQ(board.list(filter).size(), 2u) << "6 and 2";
}

TEST(JobBoard, Watch_IsToldOnce) {
  JobBoard board;
  int calls = 0;
  const auto count = [&calls](const JobView& /*job*/) {
    ++calls;
  };
  EXPECT_EQ(board.watch(1, 0, count), 0u) << "there is no such job";
  board.settle({{view(1, 1)}, {}}, true);
  EXPECT_NE(board.watch(1, 0, count), 0u);
  EXPECT_EQ(calls, 1) << "at once";
  board.watch(1, 2, count);
  board.settle({{view(1, 2)}, {}}, true);
  EXPECT_EQ(calls, 1) << "not above the revision";
  board.settle({{view(1, 3)}, {}}, true);
  board.settle({{view(1, 4)}, {}}, true);
  EXPECT_EQ(calls, 2);
  const JobBoard::WatchId dropped = board.watch(1, 4, count);
  board.unwatch(dropped);
  board.settle({{view(1, 5)}, {}}, true);
  EXPECT_EQ(calls, 2);
}

// What the watcher uses goes as soon as unwatch() returns.
TEST(JobBoard, UnwatchAgainstChanges_IsNotCalledAfterwards) {
  JobBoard board;
  board.settle({{view(1, 1)}, {}}, true);
  std::atomic<bool> isOver = false;
  std::uint64_t revision = 1;
  std::thread changes([&] {
    while (!isOver) {
      board.settle({{view(1, ++revision)}, {}}, true);
    }
  });
  for (int i = 0; i < 2000; ++i) {
    auto seen = std::make_unique<std::uint64_t>(0);
    const JobBoard::WatchId id =
        board.watch(1, board.find(1)->revision,
                    [mine = seen.get()](const JobView& job) { *mine = job.revision; });
    board.unwatch(id);
    seen.reset();
  }
  isOver = true;
  changes.join();
}

// A call that ends its own watch does not wait for itself.
TEST(JobBoard, UnwatchWithinTheCall_Returns) {
  JobBoard board;
  board.settle({{view(1, 1)}, {}}, true);
  JobBoard::WatchId id = 0;
  bool isCalled = false;
  id = board.watch(1, 1, [&](const JobView& /*job*/) {
    board.unwatch(id);
    isCalled = true;
  });
  board.settle({{view(1, 2)}, {}}, true);
  EXPECT_TRUE(isCalled);
}

}  // namespace
}  // namespace dme
