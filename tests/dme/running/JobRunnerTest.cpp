#include "dme/running/JobRunner.h"

#include <gtest/gtest.h>

#include "model/sd/SlotMo.h"
#include "model/serviceorchapi/Methods.h"
#include "model/zan_dme/Methods.h"
#include "tests/dme/running/JobFixture.h"
#include "tests/support/LogCapture.h"

// Jobs from the order to their end, with a gateway that does what each test says.

namespace dme {
namespace {

using dme_test::forApp;
using dme_test::forSlot;
using std::chrono::milliseconds;
using std::chrono::seconds;

using JobRunnerTest = dme_test::JobFixture;
using Gateway = dme_test::ScriptedGateway;

TEST_F(JobRunnerTest, Install_GoesItsWay) {
  gateway_->admit(3);
  describe("a1", 3);
  const std::uint64_t id = ordered(forApp(JobVerb::kInstall, "a1"));
  const auto stage = gateway_->waitForStage(1);
  JobView job = waitFor(id, JobState::kSending);
  EXPECT_EQ(job.attempts, 1u);
  EXPECT_EQ(job.sentAt, kNow);
  EXPECT_EQ(job.finishBy, kNow + 360000);
  const auto call = stage.as<zan_dme::FsmSdAppInstanceInstallApplicationSendCommandMe>();
  ASSERT_NE(call, nullptr);
  EXPECT_EQ(std::get<2>(call->in).text(), "sys/chassis-1/slot-3/app-a1");
  EXPECT_EQ(std::get<3>(call->in), id);

  gateway_->succeed(stage);
  job = waitFor(id, JobState::kRunning);
  EXPECT_EQ(job.acknowledgedAt, kNow);
  EXPECT_EQ(engine_->app("a1")->phase, AppPhase::kAbsent);
  pass(milliseconds(5));
  gateway_->progress("a1", Gateway::kInstall, 40, Gateway::kRunning);
  EXPECT_EQ(engine_->job(id)->percentage, 40u);
  const std::uint64_t revision = engine_->job(id)->revision;
  gateway_->progress("a1", Gateway::kInstall, 30, Gateway::kRunning);
  EXPECT_EQ(engine_->job(id)->percentage, 40u) << "it never falls";
  EXPECT_EQ(engine_->job(id)->revision, revision) << "nothing has changed";
  gateway_->progress("a1", Gateway::kInstall, 100, Gateway::kSucceeded, 100);
  job = *engine_->job(id);
  EXPECT_EQ(job.state, JobState::kSucceeded);
  EXPECT_EQ(job.percentage, 100u);
  EXPECT_EQ(job.finishedAt, kNow + 5);
  EXPECT_EQ(job.reason, JobReason::kNone);
  EXPECT_EQ(engine_->app("a1")->phase, AppPhase::kStopped);
  EXPECT_EQ(engine_->app("a1")->job, 0u);
}

TEST_F(JobRunnerTest, Instance_LivesThroughItsPhases) {
  gateway_->admit(3);
  describe("a1", 3);
  std::size_t stages = 0;
  const auto carryOut = [&](const JobOrder& order, Gateway::Command command) {
    const std::uint64_t id = ordered(order);
    gateway_->succeed(gateway_->waitForStage(++stages));
    waitFor(id, JobState::kRunning);
    gateway_->progress("a1", command, 100, Gateway::kSucceeded);
    EXPECT_EQ(waitFor(id, JobState::kSucceeded).percentage, 100u);
    return engine_->app("a1").value();
  };
  EXPECT_EQ(carryOut(forApp(JobVerb::kInstall, "a1"), Gateway::kInstall).phase, AppPhase::kStopped);
  EXPECT_EQ(carryOut(forApp(JobVerb::kStart, "a1"), Gateway::kStart).phase, AppPhase::kStarted);
  JobOrder upgrade = forApp(JobVerb::kUpgrade, "a1");
  upgrade.packageFile = "fw-2.0.pkg";
  upgrade.version = "2.0";
  const AppView upgraded = carryOut(upgrade, Gateway::kUpgrade);
  EXPECT_EQ(upgraded.phase, AppPhase::kStarted);
  EXPECT_EQ(upgraded.packageFile, "fw-2.0.pkg");
  EXPECT_EQ(upgraded.version, "2.0");
  EXPECT_EQ(carryOut(forApp(JobVerb::kStop, "a1"), Gateway::kStop).phase, AppPhase::kStopped);
  EXPECT_EQ(carryOut(forApp(JobVerb::kUninstall, "a1"), Gateway::kUninstall).phase,
            AppPhase::kAbsent);
  EXPECT_TRUE(dme_test::remove(*engine_, "a1"));
}

TEST_F(JobRunnerTest, NoAnswer_IsUnknownInTimeAndALateOneStillTells) {
  const test_support::LogCapture log(5);
  gateway_->admit(3);
  gateway_->admit(4);
  const std::uint64_t level = ordered(forSlot(JobVerb::kLogLevel, 3));
  JobOrder order = forSlot(JobVerb::kFormatDisk, 4);
  order.finishWithin = seconds(40);
  const std::uint64_t format = ordered(order);
  const auto stages = gateway_->waitForStages(2);
  pass(milliseconds(29999));
  EXPECT_EQ(engine_->job(level)->state, JobState::kSending);
  pass(milliseconds(1));
  EXPECT_EQ(waitFor(level, JobState::kUnknown).reason, JobReason::kFinishByPast);
  EXPECT_TRUE(log.waitFor(5,
                          "job 1: logLevel of slot 3 has an unknown end, finishByPast: no end was "
                          "reported in time"));
  gateway_->succeed(stages[0]);
  EXPECT_EQ(waitFor(level, JobState::kSucceeded).code, 0u);
  pass(seconds(10));
  waitFor(format, JobState::kUnknown);
  gateway_->fail(stages[1], 580);
  const JobView job = waitFor(format, JobState::kFailed);
  EXPECT_EQ(job.reason, JobReason::kDeliverByPast);
  EXPECT_EQ(gateway_->stages().size(), 2u) << "it is not sent again";
}

TEST_F(JobRunnerTest, BladeNeverEnds_IsUnknownAndProgressShowsThatItWorks) {
  gateway_->admit(3);
  describe("a1", 3);
  const std::uint64_t id = ordered(forApp(JobVerb::kInstall, "a1"));
  gateway_->succeed(gateway_->waitForStage(1));
  waitFor(id, JobState::kRunning);
  pass(seconds(360));
  EXPECT_EQ(waitFor(id, JobState::kUnknown).reason, JobReason::kFinishByPast);
  EXPECT_EQ(engine_->app("a1")->phase, AppPhase::kUnsure);
  gateway_->progress("a1", Gateway::kInstall, 50, Gateway::kRunning);
  const JobView job = waitFor(id, JobState::kRunning);
  EXPECT_EQ(job.finishBy, kNow + 720000) << "it has its time again";
  EXPECT_EQ(job.reason, JobReason::kNone);
  pass(seconds(360));
  waitFor(id, JobState::kUnknown);
}

TEST_F(JobRunnerTest, Deregistered_IsNotWatchedAndTakesNoCommands) {
  gateway_->admit(3);
  const std::uint64_t id = ordered(forSlot(JobVerb::kDeregister, 3));
  const auto stage = gateway_->waitForStage(1);
  EXPECT_NE(stage.as<serviceorchapi::DeRegisterBladeMe>(), nullptr);
  EXPECT_TRUE(engine_->slot(3)->isWatched);
  gateway_->succeed(stage);
  waitFor(id, JobState::kSucceeded);
  EXPECT_FALSE(engine_->slot(3)->isWatched);
  EXPECT_EQ(engine_->slot(3)->admission, sd::Admission::kNone);
  const std::uint64_t level = ordered(forSlot(JobVerb::kLogLevel, 3));
  EXPECT_EQ(engine_->job(level)->reason, JobReason::kWaitsForBlade);
}

}  // namespace
}  // namespace dme
