#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>

#include "dme/store/ObjectStore.h"
#include "model/sd/JobMo.h"
#include "tests/dme/running/JobFixture.h"

// What is on the disk when, what a restart makes of it, and what reports tell of unknown ends.

namespace dme {
namespace {

using dme_test::forApp;
using dme_test::forSlot;
using std::chrono::seconds;

using Gateway = dme_test::ScriptedGateway;

class JobRestartTest : public dme_test::JobFixture {
 protected:
  /// The state of the job as a crash in this moment would leave it.
  std::string storedState(std::uint64_t id) {
    const dme_test::TempDirectory copy;
    std::filesystem::copy(directory_.file("state"), copy.path() + "/state");
    auto store = ObjectStore::open(copy.path() + "/state");
    EXPECT_TRUE(store) << store.error().text;
    const Object* const job = (*store)->find(mo::Dn("sys/job-" + std::to_string(id)));
    return job != nullptr ? job->get(sd::JobMo::kState).str() : "nothing";
  }
  /// A job of the instance with an unknown end.
  std::uint64_t unknown(JobVerb verb) {
    const std::size_t before = gateway_->stages().size();
    const std::uint64_t id = ordered(forApp(verb, "a1"));
    gateway_->fail(gateway_->waitForStage(before + 1), 578);
    waitFor(id, JobState::kUnknown);
    return id;
  }
  AppPhase phase() { return engine_->app("a1")->phase; }
};

TEST_F(JobRestartTest, Sending_IsDurableBeforeTheCommandLeaves) {
  gateway_->admit(3);
  const std::uint64_t id = ordered(forSlot(JobVerb::kLogLevel, 3));
  gateway_->waitForStage(1);
  EXPECT_EQ(storedState(id), "sending");
}

TEST_F(JobRestartTest, EachState_GoesOnAsItMust) {
  gateway_->admit(3);
  gateway_->admit(4);
  describe("a1", 3);
  const std::uint64_t running = ordered(forApp(JobVerb::kInstall, "a1"));
  gateway_->succeed(gateway_->waitForStage(1));
  waitFor(running, JobState::kRunning);
  const std::uint64_t sending = ordered(forSlot(JobVerb::kLogLevel, 4));
  const auto stage = gateway_->waitForStage(2);
  waitFor(sending, JobState::kSending);
  const std::uint64_t accepted = ordered(forSlot(JobVerb::kLogLevel, 5));
  const std::uint64_t revision = engine_->job(running)->revision;

  open();
  EXPECT_EQ(engine_->job(accepted)->state, JobState::kAccepted);
  EXPECT_EQ(engine_->job(running)->state, JobState::kRunning);
  EXPECT_EQ(engine_->job(running)->revision, revision);
  const JobView lost = *engine_->job(sending);
  EXPECT_EQ(lost.state, JobState::kUnknown);
  EXPECT_EQ(lost.reason, JobReason::kRestarted);
  gateway_->succeed(stage);  // of the engine's earlier life
  gateway_->admit(5);
  gateway_->succeed(gateway_->waitForStage(1));
  waitFor(accepted, JobState::kSucceeded);
  gateway_->progress("a1", Gateway::kInstall, 100, Gateway::kSucceeded);
  waitFor(running, JobState::kSucceeded);
  EXPECT_EQ(engine_->job(sending)->state, JobState::kUnknown);
  EXPECT_EQ(engine_->status().methods.strayAnswers, 1u);
  EXPECT_EQ(gateway_->stages().size(), 1u) << "nothing is sent twice";
}

TEST_F(JobRestartTest, Deadlines_GoOnAcrossARestart) {
  JobOrder order = forSlot(JobVerb::kLogLevel, 3);
  order.deliverWithin = seconds(10);
  const std::uint64_t id = ordered(order);
  pass(seconds(6));
  open();
  pass(seconds(3));
  EXPECT_EQ(engine_->job(id)->state, JobState::kAccepted);
  pass(seconds(1));
  EXPECT_EQ(waitFor(id, JobState::kFailed).reason, JobReason::kDeliverByPast);
}

TEST_F(JobRestartTest, SeenDone_CountsFromTheSecondReport) {
  gateway_->admit(3);
  describe("a1", 3);
  const std::uint64_t id = unknown(JobVerb::kInstall);
  EXPECT_EQ(phase(), AppPhase::kUnsure);
  gateway_->report(3, {{"a1"}});  // may have waited for its turn since before the command
  EXPECT_EQ(engine_->job(id)->state, JobState::kUnknown);
  gateway_->report(3, {{"a1"}});
  const JobView job = waitFor(id, JobState::kSucceeded);
  EXPECT_EQ(job.reason, JobReason::kSeenDone);
  EXPECT_EQ(phase(), AppPhase::kStopped);
}

TEST_F(JobRestartTest, SeenDoneInAnOldReportOnly_DoesNotCount) {
  gateway_->admit(3);
  describe("a1", 3);
  const std::uint64_t id = unknown(JobVerb::kInstall);
  gateway_->report(3, {{"a1"}});
  gateway_->report(3, {});
  gateway_->report(3, {{"a1"}});
  EXPECT_EQ(engine_->job(id)->state, JobState::kUnknown);
}

TEST_F(JobRestartTest, SeenUndone_CountsWhenTheBladeHadItsTime) {
  gateway_->admit(3);
  describe("a1", 3);
  const std::uint64_t id = unknown(JobVerb::kInstall);
  gateway_->report(3, {});
  pass(seconds(29));
  gateway_->report(3, {});
  EXPECT_EQ(engine_->job(id)->state, JobState::kUnknown);
  EXPECT_TRUE(engine_->model(mo::Dn("sys/chassis-1/slot-3/app-a1/fault-missing")).empty());
  pass(seconds(1));
  gateway_->report(3, {});
  EXPECT_EQ(waitFor(id, JobState::kFailed).reason, JobReason::kSeenUndone);
  EXPECT_EQ(phase(), AppPhase::kAbsent) << "as the report shows it";
}

TEST_F(JobRestartTest, BladeThatStoodStill_HasItsTimeFromItsFirstReport) {
  gateway_->admit(3);
  describe("a1", 3);
  const std::uint64_t id = unknown(JobVerb::kInstall);
  pass(seconds(3600));
  gateway_->report(3, {});  // before it comes to the command, which lay there all the time
  EXPECT_EQ(engine_->job(id)->state, JobState::kUnknown);
  gateway_->progress("a1", Gateway::kInstall, 50, Gateway::kRunning);
  EXPECT_EQ(engine_->job(id)->state, JobState::kRunning);
}

TEST_F(JobRestartTest, UnknownFormatting_IsSettledByAValidBlade) {
  gateway_->admit(3);
  const std::uint64_t id = ordered(forSlot(JobVerb::kFormatDisk, 3));
  gateway_->fail(gateway_->waitForStage(1), 578);
  waitFor(id, JobState::kUnknown);
  gateway_->call<serviceorchapi::ValidateBladeStateMe>({3, "1.2", "another's"});
  EXPECT_EQ(engine_->job(id)->state, JobState::kUnknown);
  gateway_->call<serviceorchapi::ValidateBladeStateMe>({3, "1.2", ""});
  EXPECT_EQ(waitFor(id, JobState::kSucceeded).reason, JobReason::kSeenDone);
}

TEST_F(JobRestartTest, UnknownFormattingOfAValidBlade_IsNotSettledByItsRegistration) {
  gateway_->admit(3);
  const std::uint64_t id = ordered(forSlot(JobVerb::kFormatDisk, 3));
  gateway_->fail(gateway_->waitForStage(1), 578);
  waitFor(id, JobState::kUnknown);
  gateway_->call<serviceorchapi::ValidateBladeStateMe>({3, "1.2", ""});
  EXPECT_EQ(engine_->job(id)->state, JobState::kUnknown);
}

TEST_F(JobRestartTest, DiskThatRefuses_RefusesOrdersAndSendsNothing) {
  gateway_->admit(3);
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  rlimit usual{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &usual), 0);
  const rlimit none{0, usual.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &none), 0);
  const auto refused = dme_test::order(*engine_, forSlot(JobVerb::kLogLevel, 3));
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &usual), 0);
  std::signal(SIGXFSZ, before);
  EXPECT_EQ(dme_test::refusalOf(refused), "notStored: the disk refuses to write");
  settle();
  EXPECT_FALSE(engine_->job(1));
  const std::uint64_t id = ordered(forSlot(JobVerb::kLogLevel, 3));
  const auto stage = gateway_->waitForStage(1);
  EXPECT_EQ(gateway_->stages().size(), 1u);
  gateway_->succeed(stage);
  waitFor(id, JobState::kSucceeded);
  EXPECT_FALSE(engine_->job(1)) << "the operator was told that there is none";
}

}  // namespace
}  // namespace dme
