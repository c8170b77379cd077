#include "dme/running/JobListener.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "model/sd/SlotMo.h"
#include "model/serviceorchapi/Methods.h"
#include "model/zan_dme/Methods.h"
#include "tests/dme/running/JobFixture.h"

// What the gateway answers and blades report, and what becomes of the job.

namespace dme {
namespace {

using dme_test::forApp;
using dme_test::forSlot;

using JobListenerTest = dme_test::JobFixture;
using Gateway = dme_test::ScriptedGateway;

struct AnswerCase {
  const char* name;
  JobVerb verb;
  std::uint32_t code;
  JobState state;
  JobReason reason;
};
void PrintTo(const AnswerCase& each, std::ostream* out) {
  *out << each.name;
}

class JobAnswer : public dme_test::JobFixture, public testing::WithParamInterface<AnswerCase> {};

TEST_P(JobAnswer, Failure_LeadsTo) {
  const AnswerCase& each = GetParam();
  gateway_->admit(3);
  pass(std::chrono::seconds(1));  // until then clearing logs is kept back
  describe("a1", 3);
  const std::uint64_t id =
      ordered(isForApp(each.verb) ? forApp(each.verb, "a1") : forSlot(each.verb, 3));
  gateway_->fail(gateway_->waitForStage(1), each.code, "GATEWAY:: says\nwhy");
  const JobView job = waitForReason(id, each.reason);
  EXPECT_EQ(job.state, each.state);
  EXPECT_EQ(job.code, each.code);
  const std::string ambiguous = ", as it does also when the blade was told and did not answer";
  EXPECT_EQ(job.cause, "the gateway says 'GATEWAY:: says\\x0awhy' (" + std::to_string(each.code) +
                           ")" + (each.verb == JobVerb::kClearSystemLogs ? ambiguous : ""));
  EXPECT_EQ(job.finishedAt != 0, isFinal(each.state));
  if (isForApp(each.verb)) {
    EXPECT_EQ(engine_->app("a1")->phase,
              each.state == JobState::kUnknown ? AppPhase::kUnsure : AppPhase::kAbsent);
  }
}

using Reason = JobReason;
using State = JobState;
INSTANTIATE_TEST_SUITE_P(
    Codes, JobAnswer,
    testing::Values(
        AnswerCase{"NoChannel", JobVerb::kInstall, 576, State::kAccepted, Reason::kNotDelivered},
        AnswerCase{"BrokenOff", JobVerb::kInstall, 577, State::kUnknown, Reason::kAnswerLost},
        AnswerCase{"NoAnswer", JobVerb::kInstall, 578, State::kUnknown, Reason::kAnswerLost},
        AnswerCase{"HalfAnAnswer", JobVerb::kInstall, 579, State::kUnknown, Reason::kAnswerLost},
        AnswerCase{"NotRegistered", JobVerb::kInstall, 580, State::kAccepted,
                   Reason::kNotDelivered},
        AnswerCase{"NotValid", JobVerb::kFormatDisk, 581, State::kAccepted, Reason::kNotDelivered},
        AnswerCase{"Refused", JobVerb::kInstall, 1003, State::kFailed, Reason::kRefused},
        AnswerCase{"NobodyThere", JobVerb::kLogLevel, 1, State::kFailed, Reason::kRefused},
        AnswerCase{"MixedCode", JobVerb::kClearSystemLogs, 1003, State::kUnknown,
                   Reason::kAnswerLost},
        AnswerCase{"Injected", JobVerb::kTimeZone, 0, State::kFailed, Reason::kRefused}),
    [](const auto& each) { return std::string(each.param.name); });

TEST_F(JobListenerTest, CommandsDoneWithTheReply_AreDone) {
  gateway_->admit(3);
  pass(std::chrono::seconds(1));  // until then clearing logs is kept back
  std::size_t stages = 0;
  for (const JobVerb verb : {JobVerb::kLogLevel, JobVerb::kClearSystemLogs, JobVerb::kTimeZone}) {
    const std::uint64_t id = ordered(forSlot(verb, 3));
    gateway_->succeed(gateway_->waitForStage(++stages));
    EXPECT_EQ(waitFor(id, JobState::kSucceeded).finishBy, kNow + 31000) << nameOf(verb);
  }
  const auto level =
      gateway_->stages()[0].as<zan_dme::FsmSdSlotChangePlatformLogLevelSendCommandMe>();
  ASSERT_NE(level, nullptr);
  const method::Config& slot = std::get<4>(level->in);
  EXPECT_EQ(*slot.find(sd::SlotMo::kSlotCommand.id), method::Value(sd::kChangePlatformLogLevel));
  EXPECT_EQ(*slot.find(sd::SlotMo::kPlatformLogLevel.id), method::Value(std::uint8_t{1}));
  EXPECT_EQ(slot.find(sd::SlotMo::kToken.id), nullptr);
  const auto zone = gateway_->stages()[2].as<serviceorchapi::UpdateTimeZoneMe>();
  ASSERT_NE(zone, nullptr);
  EXPECT_EQ(std::get<5>(zone->in), 3u);
  EXPECT_EQ(std::get<6>(zone->in), "info") << "the level that was set";
}

TEST_F(JobListenerTest, AnswersThatNobodyWaitsFor_AreCountedAndChangeNothing) {
  gateway_->admit(3);
  const std::uint64_t id = ordered(forSlot(JobVerb::kLogLevel, 3));
  const auto stage = gateway_->waitForStage(1);
  gateway_->fail(
      {stage.classId, "",
       dme_test::ServiceStandIn::encode<serviceorchapi::ClearSystemLogDataMe>({3}, "nobody's")},
      578);
  gateway_->succeed(stage);
  const JobView job = waitFor(id, JobState::kSucceeded);
  gateway_->fail(stage, 578);
  gateway_->succeed(stage);
  settle();
  EXPECT_EQ(engine_->job(id)->revision, job.revision);
  EXPECT_EQ(engine_->status().methods.strayAnswers, 3u);
}

TEST_F(JobListenerTest, ReportBeforeTheAnswer_Ends) {
  gateway_->admit(3);
  describe("a1", 3);
  const std::uint64_t id = ordered(forApp(JobVerb::kInstall, "a1"));
  const auto stage = gateway_->waitForStage(1);
  gateway_->progress("a1", Gateway::kInstall, 10, Gateway::kRunning);
  EXPECT_EQ(engine_->job(id)->state, JobState::kRunning);
  gateway_->succeed(stage);
  gateway_->progress("a1", Gateway::kInstall, 60, Gateway::kFailed, 513, "no\troom");
  const JobView job = waitFor(id, JobState::kFailed);
  EXPECT_EQ(job.reason, JobReason::kFailedOnBlade);
  EXPECT_EQ(job.cause, "the blade says 'no\\x09room' (513)");
  EXPECT_EQ(job.code, 513u);
  EXPECT_EQ(job.percentage, 60u);
  EXPECT_EQ(engine_->app("a1")->phase, AppPhase::kUnsure);
}

// An instance that has stopped by itself cannot be stopped. It must not stay "started" for ever.
TEST_F(JobListenerTest, StopOfWhatDoesNotRun_LeavesWhatTheNextReportShows) {
  gateway_->admit(3);
  describe("a1", 3);
  std::size_t stages = 0;
  const auto carryOut = [&](JobVerb verb, Gateway::Command command, Gateway::Status status) {
    const std::uint64_t id = ordered(forApp(verb, "a1"));
    gateway_->succeed(gateway_->waitForStage(++stages));
    gateway_->progress("a1", command, 100, status, 508);
    return engine_->job(id)->state;
  };
  carryOut(JobVerb::kInstall, Gateway::kInstall, Gateway::kSucceeded);
  carryOut(JobVerb::kStart, Gateway::kStart, Gateway::kSucceeded);
  EXPECT_EQ(engine_->app("a1")->phase, AppPhase::kStarted);
  EXPECT_EQ(carryOut(JobVerb::kStop, Gateway::kStop, Gateway::kFailed), JobState::kFailed);
  EXPECT_EQ(engine_->app("a1")->phase, AppPhase::kUnsure);
  gateway_->report(3, {{"a1"}});
  EXPECT_EQ(engine_->app("a1")->phase, AppPhase::kStopped);
  ordered(forApp(JobVerb::kStart, "a1"));
}

TEST_F(JobListenerTest, HostileTexts_BecomeAPieceOfOneLine) {
  gateway_->admit(3);
  const std::uint64_t id = ordered(forSlot(JobVerb::kLogLevel, 3));
  std::string text(5000, '\n');
  text += "\x1b[31m%s%n\xff";
  gateway_->fail(gateway_->waitForStage(1), 1003, text);
  const JobView job = waitFor(id, JobState::kFailed);
  EXPECT_EQ(std::count(job.cause.begin(), job.cause.end(), '\n'), 0);
  EXPECT_LE(job.cause.size(), 900u);
}

}  // namespace
}  // namespace dme
