#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include "tests/dme/running/JobFixture.h"
#include "tests/dme/support/DiskFaults.h"
#include "tests/support/LogCapture.h"

// Jobs while the disk refuses to write, or does not come back from a write.

namespace dme {
namespace {

using dme_test::forSlot;
using dme_test::refusalOf;
using std::chrono::minutes;
using std::chrono::seconds;

constexpr std::uint32_t kNoBladeThere = 580;

class JobDiskTest : public dme_test::JobFixture {
 protected:
  /// A job of slot 3 that was not delivered and has its turn again in a second.
  std::uint64_t undelivered(const JobOrder& order = forSlot(JobVerb::kLogLevel, 3)) {
    gateway_->admit(3);
    const std::uint64_t id = ordered(order);
    gateway_->fail(gateway_->waitForStage(1), kNoBladeThere);
    waitForReason(id, JobReason::kNotDelivered);
    return id;
  }
  /// Fills the disk, and lets the job's turn come.
  void fillBeforeItsTurn() {
    disk_.fill();
    pass(seconds(1));
    EXPECT_TRUE(log_.waitFor(
        8, "changes cannot be stored (database or disk is full): they are kept and tried again"));
  }
  std::future<Granted<JobView>> orderInBackground(const JobOrder& order) {
    auto outcome = std::make_shared<std::promise<Granted<JobView>>>();
    engine_->order(order, [outcome](Granted<JobView> job) { outcome->set_value(std::move(job)); });
    return outcome->get_future();
  }
  /// Stops the engine on a thread of its own, and returns when it takes no more orders.
  std::future<void> stopInBackground() {
    std::future<void> stopped = std::async(std::launch::async, [this] { engine_->stop(); });
    JobOrder misfit = forSlot(JobVerb::kLogLevel, 4);
    misfit.level = "loud";  // is refused for that until then
    while (refusalOf(dme_test::order(*engine_, misfit)) != "notStored: the engine is stopping") {
      std::this_thread::yield();
    }
    return stopped;
  }
  template <class T>
  static bool isOver(const std::future<T>& outcome) {
    return outcome.wait_for(seconds(0)) == std::future_status::ready;
  }

  dme_test::DiskFaults disk_;
  const test_support::LogCapture log_{5};
};

TEST_F(JobDiskTest, FullWhenItsTurnComes_IsNotSentBeforeThatIsStored) {
  JobOrder order = forSlot(JobVerb::kLogLevel, 3);
  order.deliverWithin = order.finishWithin = minutes(60);  // however slow the disk's thread is
  const std::uint64_t id = undelivered(order);
  const JobView before = *engine_->job(id);
  const std::uint64_t failures = engine_->status().commits.failures;
  fillBeforeItsTurn();
  passUntil([&] { return engine_->status().commits.failures > failures + 1; });
  EXPECT_EQ(gateway_->stages().size(), 1u) << "sent without being durable";
  EXPECT_EQ(engine_->job(id)->revision, before.revision) << "shown without being durable";

  disk_.release();
  passUntil([this] { return gateway_->stages().size() == 2; });
  gateway_->succeed(gateway_->waitForStage(2));
  EXPECT_EQ(waitFor(id, JobState::kSucceeded).attempts, 2u) << "those that never left count";
}

TEST_F(JobDiskTest, FullUntilItIsTooLate_FailsAndTellsWhy) {
  const std::uint64_t id = undelivered();
  fillBeforeItsTurn();
  passUntil([this] { return timeOfDay() > kNow + 310000; });
  disk_.release();
  passUntil([&] { return engine_->job(id)->state == JobState::kFailed; });
  const JobView job = *engine_->job(id);
  EXPECT_EQ(job.reason, JobReason::kDeliverByPast);
  // Before its turn, or with the first step of that unwritten: which, the disk's thread decides.
  EXPECT_TRUE(job.cause.ends_with("the disk refuses to write")) << job.cause;
  EXPECT_EQ(gateway_->stages().size(), 1u);
}

TEST_F(JobDiskTest, WriteHangsUntilTheTimeIsOverAndFails_TheBladeWasNotTold) {
  const std::uint64_t id = undelivered();
  settle();
  disk_.hold();
  clock_.advance(seconds(1));
  ASSERT_TRUE(disk_.waitUntilHeld());
  clock_.advance(seconds(30));
  ASSERT_TRUE(log_.waitFor(5,
                           "job 1: logLevel of slot 3 has an unknown end, finishByPast: no end was "
                           "reported in time"));
  disk_.refuseOnce();
  disk_.release();
  passUntil([&] { return engine_->job(id)->state == JobState::kFailed; });
  const JobView job = *engine_->job(id);
  EXPECT_EQ(job.reason, JobReason::kDeliverByPast);
  EXPECT_EQ(job.cause, "the disk refuses to write");
  EXPECT_EQ(job.attempts, 1u);
  EXPECT_EQ(gateway_->stages().size(), 1u);
}

// ----- Stopping -----------------------------------------------------------------------------

TEST_F(JobDiskTest, StoppedWhileAWriteHangs_AnswersUntilTheWriteIsOver) {
  disk_.hold();
  const auto job = orderInBackground(forSlot(JobVerb::kLogLevel, 3));
  ASSERT_TRUE(disk_.waitUntilHeld());
  const std::future<void> stopped = stopInBackground();
  EXPECT_TRUE(engine_->jobs({}).empty());
  EXPECT_EQ(engine_->slots().size(), 8u);
  EXPECT_EQ(engine_->status().slots, 8u);
  EXPECT_FALSE(isOver(job));
  EXPECT_FALSE(isOver(stopped));

  disk_.release();
  stopped.wait();
  ASSERT_TRUE(isOver(job));
  open();
  EXPECT_EQ(engine_->job(1)->state, JobState::kAccepted);
}

TEST_F(JobDiskTest, RefusedWhileTheEngineStops_IsNotThereAfterwards) {
  disk_.hold();
  auto job = orderInBackground(forSlot(JobVerb::kLogLevel, 3));
  ASSERT_TRUE(disk_.waitUntilHeld());
  const std::future<void> stopped = stopInBackground();
  disk_.refuseOnce();  // and the engine's last attempt succeeds
  disk_.release();
  stopped.wait();
  ASSERT_TRUE(isOver(job));
  EXPECT_EQ(refusalOf(job.get()), "notStored: the disk refuses to write");
  open();
  EXPECT_FALSE(engine_->job(1)) << "the operator was told that there is none";
}

TEST_F(JobDiskTest, TurnIsNotStoredWhileTheEngineStops_TheBladeIsStillToBeTold) {
  const std::uint64_t id = undelivered();
  settle();
  disk_.hold();
  clock_.advance(seconds(1));
  ASSERT_TRUE(disk_.waitUntilHeld());
  const std::future<void> stopped = stopInBackground();
  disk_.refuseOnce();
  disk_.release();
  stopped.wait();
  EXPECT_EQ(gateway_->stages().size(), 1u);
  open();
  EXPECT_EQ(engine_->job(id)->state, JobState::kAccepted);
  EXPECT_EQ(engine_->job(id)->attempts, 1u);
}

}  // namespace
}  // namespace dme
