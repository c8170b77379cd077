#include "dme/jobs/JobTable.h"

#include <gtest/gtest.h>

#include <future>

#include "tests/dme/support/TempDirectory.h"

namespace dme {
namespace {

class JobTableTest : public testing::Test {
 protected:
  Job job(JobVerb verb, std::uint32_t slot) {
    Job made;
    made.view.verb = verb;
    made.view.slot = slot;
    made.view.target = "sys/chassis-1/slot-" + std::to_string(slot);
    return made;
  }
  std::uint64_t add(JobVerb verb, std::uint32_t slot) {
    return table_->add(job(verb, slot)).view.id;
  }
  void end(std::uint64_t id, JobState state) {
    Job& ended = *table_->find(id);
    ended.view.state = state;
    table_->save(ended);
  }
  void commit() {
    std::promise<bool> stored;
    store_->commit([&](const Result<void>& outcome) { stored.set_value(outcome.has_value()); });
    ASSERT_TRUE(stored.get_future().get());
    table_->takeChanges();
  }
  void reopen() {
    table_.reset();
    store_.reset();
    store_ = std::move(*ObjectStore::open(directory_.path()));
    table_ = std::make_unique<JobTable>(*store_);
  }

  dme_test::TempDirectory directory_;
  std::unique_ptr<ObjectStore> store_ = std::move(*ObjectStore::open(directory_.path()));
  std::unique_ptr<JobTable> table_ = std::make_unique<JobTable>(*store_);
};

TEST_F(JobTableTest, NumbersGrowAcrossRestarts) {
  add(JobVerb::kLogLevel, 3);
  const std::uint64_t last = add(JobVerb::kLogLevel, 4);
  end(last, JobState::kSucceeded);
  commit();
  reopen();
  EXPECT_EQ(add(JobVerb::kLogLevel, 5), last + 1);
}

TEST_F(JobTableTest, OpenAreThoseOfWhichMoreIsToBeExpected) {
  const std::uint64_t failed = add(JobVerb::kInstall, 1);
  const std::uint64_t install = add(JobVerb::kInstall, 2);
  const std::uint64_t level = add(JobVerb::kLogLevel, 3);
  EXPECT_EQ(table_->open(), 3u);
  end(failed, JobState::kFailed);
  EXPECT_EQ(table_->open(), 2u);
  end(install, JobState::kUnknown);
  EXPECT_EQ(table_->open(), 2u) << "a report may settle it";
  end(level, JobState::kUnknown);
  EXPECT_EQ(table_->open(), 1u) << "no report tells of a log level";
  EXPECT_NE(table_->find(level), nullptr) << "but an answer may come yet";
  EXPECT_EQ(table_->find(failed), nullptr);
}

TEST_F(JobTableTest, OfJobsThatAreOver_TheLatestAreKept) {
  const std::uint64_t open = add(JobVerb::kInstall, 1);
  const std::uint64_t first = open + 1;
  for (std::size_t i = 0; i < JobTable::kMostOver + 3; ++i) {
    end(add(JobVerb::kLogLevel, 2), JobState::kSucceeded);
  }
  EXPECT_EQ(table_->takeChanges().removed,
            (std::vector<std::uint64_t>{first, first + 1, first + 2}));
  commit();
  reopen();
  std::vector<JobView> kept = table_->takeChanges().changed;
  EXPECT_EQ(kept.size(), JobTable::kMostOver + 1) << "and the open one";
  EXPECT_NE(table_->find(open), nullptr);
  EXPECT_EQ(table_->open(), 1u);
}

}  // namespace
}  // namespace dme
