#include "dme/running/JobTurns.h"

#include <gtest/gtest.h>

#include "model/zan_dme/Methods.h"
#include "tests/dme/running/JobFixture.h"

// Commands that the gateway could not deliver, and when they are tried again.

namespace dme {
namespace {

using dme_test::forSlot;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

constexpr std::uint32_t kNoBladeThere = 580;

class JobRetryTest : public dme_test::JobFixture {
 protected:
  /// Orders an installation in slot 3 that is not delivered so many times.
  std::uint64_t undelivered(std::size_t times) {
    gateway_->admit(3);
    describe("a1", 3);
    const std::uint64_t id = ordered(dme_test::forApp(JobVerb::kInstall, "a1"));
    for (std::size_t i = 1; i <= times; ++i) {
      gateway_->fail(gateway_->waitForStage(i), kNoBladeThere);
      waitForReason(id, JobReason::kNotDelivered);
      if (i < times) {
        pass(seconds(1 << (i - 1)));
      }
    }
    return id;
  }
  /// Whether a command for slot 3 that was ordered before is not sent: what is ordered after it is.
  bool isKeptBack() {
    const std::uint64_t id = ordered(forSlot(JobVerb::kLogLevel, 3));
    const auto stage = gateway_->waitForStage(1);
    using LogLevel = zan_dme::FsmSdSlotChangePlatformLogLevelSendCommandMe;
    if (stage.as<LogLevel>() == nullptr) {
      return false;
    }
    gateway_->succeed(stage);
    waitFor(id, JobState::kSucceeded);
    return true;
  }
};

TEST_F(JobRetryTest, PausesGrow) {
  undelivered(4);
  pass(seconds(8) - milliseconds(1));
  EXPECT_EQ(gateway_->stages().size(), 4u);
  pass(milliseconds(1));
  gateway_->waitForStage(5);
}

TEST_F(JobRetryTest, BladeThatRegistersEndsALongPause) {
  const std::uint64_t id = undelivered(6);  // the next pause is half a minute
  gateway_->admit(3);
  EXPECT_EQ(gateway_->stages().size(), 6u) << "the gateway knows the blade after the answer";
  pass(seconds(1));
  gateway_->succeed(gateway_->waitForStage(7));
  EXPECT_EQ(waitFor(id, JobState::kRunning).attempts, 7u);
}

TEST_F(JobRetryTest, ClearLogs_WaitUntilTheGatewayKnowsTheBlade) {
  const std::uint64_t id = ordered(forSlot(JobVerb::kClearSystemLogs, 3));
  gateway_->admit(3);
  pass(milliseconds(999));
  EXPECT_TRUE(isKeptBack()) << "its failure would not tell that nothing was sent";
  pass(milliseconds(1));
  gateway_->succeed(gateway_->waitForStage(2));
  waitFor(id, JobState::kSucceeded);
}

TEST_F(JobRetryTest, ClearLogsOrderedAfterTheRegistration_WaitAsLong) {
  gateway_->admit(3);
  pass(milliseconds(600));
  const std::uint64_t id = ordered(forSlot(JobVerb::kClearSystemLogs, 3));
  pass(milliseconds(399));
  EXPECT_TRUE(isKeptBack());
  pass(milliseconds(1));
  gateway_->succeed(gateway_->waitForStage(2));
  waitFor(id, JobState::kSucceeded);
}

TEST_F(JobRetryTest, ClearLogsOfABladeThatRegistersAgain_WaitAnew) {
  gateway_->admit(3);
  const std::uint64_t id = ordered(forSlot(JobVerb::kClearSystemLogs, 3));
  pass(milliseconds(600));
  gateway_->admit(3);
  pass(milliseconds(999));
  EXPECT_TRUE(isKeptBack());
  pass(milliseconds(1));
  gateway_->succeed(gateway_->waitForStage(2));
  waitFor(id, JobState::kSucceeded);
}

TEST_F(JobRetryTest, ClearLogsAfterARestart_WaitUntilTheBladeRegisters) {
  gateway_->admit(3);
  open();
  settle();
  const std::uint64_t id = ordered(forSlot(JobVerb::kClearSystemLogs, 3));
  pass(seconds(2));
  EXPECT_TRUE(isKeptBack());
  const JobView job = *engine_->job(id);
  EXPECT_EQ(job.reason, JobReason::kWaitsForBlade);
  EXPECT_EQ(job.cause, "the blade in slot 3 has not registered since the gateway connected");
  gateway_->admit(3);
  pass(seconds(1));
  gateway_->succeed(gateway_->waitForStage(2));
  waitFor(id, JobState::kSucceeded);
}

TEST_F(JobRetryTest, ClearLogsAfterARestart_AreSentWhenTheBladeReports) {
  gateway_->admit(3);
  open();
  settle();
  const std::uint64_t id = ordered(forSlot(JobVerb::kClearSystemLogs, 3));
  EXPECT_TRUE(isKeptBack());
  gateway_->report(3, {});  // which the gateway takes of blades that it knows
  gateway_->succeed(gateway_->waitForStage(2));
  waitFor(id, JobState::kSucceeded);
}

TEST_F(JobRetryTest, BladeInAnotherSlotChangesNothing) {
  undelivered(6);
  gateway_->admit(4);
  pass(seconds(1));
  EXPECT_EQ(gateway_->stages().size(), 6u);
}

TEST_F(JobRetryTest, NotDelivered_IsTriedAgainWithGrowingPauses) {
  gateway_->admit(3);
  JobOrder order = forSlot(JobVerb::kLogLevel, 3);
  order.deliverWithin = seconds(70);
  const std::uint64_t id = ordered(order);
  std::size_t attempts = 0;
  for (const int pause : {1, 2, 4, 8, 16, 30}) {
    gateway_->fail(gateway_->waitForStage(++attempts), 580, "not registered");
    EXPECT_EQ(waitForReason(id, JobReason::kNotDelivered).attempts, attempts);
    pass(milliseconds(pause * 1000 - 1));
    EXPECT_EQ(gateway_->stages().size(), attempts) << "not before its time";
    pass(milliseconds(1));
  }
  gateway_->fail(gateway_->waitForStage(++attempts), 580, "not registered");
  waitForReason(id, JobReason::kNotDelivered);
  pass(seconds(9));
  const JobView job = waitFor(id, JobState::kFailed);
  EXPECT_EQ(job.reason, JobReason::kDeliverByPast);
  EXPECT_EQ(job.attempts, 7u);
  EXPECT_EQ(job.cause,
            "it could not be delivered in time: the gateway says 'not registered' (580)");
  EXPECT_EQ(gateway_->stages().size(), 7u);
}

TEST_F(JobRetryTest, NeverDelivered_FailsInTime) {
  JobOrder order = forSlot(JobVerb::kLogLevel, 3);
  order.deliverWithin = seconds(5);
  const std::uint64_t id = ordered(order);
  const std::uint64_t other = ordered(forSlot(JobVerb::kLogLevel, 4));
  pass(milliseconds(4999));
  EXPECT_EQ(engine_->job(id)->state, JobState::kAccepted);
  pass(milliseconds(1));
  EXPECT_EQ(waitFor(id, JobState::kFailed).reason, JobReason::kDeliverByPast);
  pass(minutes(5));
  waitFor(other, JobState::kFailed);
  EXPECT_TRUE(gateway_->stages().empty());
}

}  // namespace
}  // namespace dme
