#include "dme/running/Jobs.h"

#include <gtest/gtest.h>

#include "tests/dme/running/JobFixture.h"

// What operators give up, and what one order brings to many blades.

namespace dme {
namespace {

using dme_test::cancel;
using dme_test::forApp;
using std::chrono::seconds;

using JobsTest = dme_test::JobFixture;

TEST_F(JobsTest, Cancel_IsForThoseThatAreWithNobody) {
  gateway_->admit(3);
  describe("a1", 3);
  const std::uint64_t id = ordered(forApp(JobVerb::kInstall, "a1"));
  const auto stage = gateway_->waitForStage(1);
  waitFor(id, JobState::kSending);
  EXPECT_EQ(dme_test::refusalOf(cancel(*engine_, id)), "wrongState: job 1 is sending");
  gateway_->succeed(stage);
  waitFor(id, JobState::kRunning);
  EXPECT_EQ(dme_test::refusalOf(cancel(*engine_, id)), "wrongState: job 1 is running");
  pass(seconds(360));
  waitFor(id, JobState::kUnknown);
  EXPECT_EQ(dme_test::refusalOf(dme_test::order(*engine_, forApp(JobVerb::kInstall, "a1"))),
            "jobInTheWay: job 1 (install of a1) is unknown");
  const auto cancelled = cancel(*engine_, id);
  ASSERT_TRUE(cancelled);
  EXPECT_EQ(cancelled->reason, JobReason::kCancelled);
  EXPECT_EQ(engine_->app("a1")->phase, AppPhase::kUnsure) << "the blade may have done it";
  EXPECT_TRUE(dme_test::order(*engine_, forApp(JobVerb::kInstall, "a1")));
}

TEST_F(JobsTest, TimeZone_GoesToEveryBladeAndALaterOneReplacesIt) {
  for (const std::uint32_t slot : {1U, 2U, 3U, 4U, 5U}) {
    gateway_->admit(slot);
  }
  const auto first = dme_test::setTimeZone(*engine_, "Europe/Berlin");
  ASSERT_TRUE(first);
  ASSERT_EQ(first->size(), 5u);
  EXPECT_EQ(first->front().argument, "Europe/Berlin");
  gateway_->waitForStages(4);
  settle();
  const auto second = dme_test::setTimeZone(*engine_, "Asia/Tokyo");
  ASSERT_TRUE(second);
  EXPECT_EQ(engine_->timeZone(), "Asia/Tokyo");
  // Four are with the gateway; the fifth was told nothing yet.
  EXPECT_EQ(second->size(), 5u);
  waitFor(first->back().id, JobState::kFailed);
  for (std::size_t i = 1; i <= 9; ++i) {
    gateway_->succeed(gateway_->waitForStage(i));
  }
  for (const JobView& job : *second) {
    waitFor(job.id, JobState::kSucceeded);
  }
}

}  // namespace
}  // namespace dme
