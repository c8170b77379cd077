#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/dme/running/JobFixture.h"
#include "tests/dme/support/DiskFaults.h"

// What an operator was told is not stored does not happen, not even when the disk writes again.

namespace dme {
namespace {

using dme_test::cancel;
using dme_test::forApp;
using dme_test::forSlot;
using dme_test::order;
using dme_test::refusalOf;
using std::chrono::minutes;
using std::chrono::seconds;

constexpr const char* kNotStored = "notStored: the disk refuses to write";

class NotStoredTest : public dme_test::JobFixture {
 protected:
  /// Lets the disk write again, and waits until it has everything.
  void freeDisk() {
    disk_.release();
    passUntil([this] { return !engine_->status().commits.isBehind; });
    settle();
  }
  /// A job of slot 3 with an unknown end, whose answer may still come.
  std::uint64_t overdue() {
    gateway_->admit(3);
    const std::uint64_t id = ordered(forSlot(JobVerb::kLogLevel, 3));
    gateway_->waitForStage(1);
    pass(seconds(30));
    waitFor(id, JobState::kUnknown);
    return id;
  }
  template <class T, class Call>
  static std::future<Granted<T>> inBackground(Call call) {
    auto outcome = std::make_shared<std::promise<Granted<T>>>();
    call([outcome](Granted<T> granted) { outcome->set_value(std::move(granted)); });
    return outcome->get_future();
  }
  std::future<Granted<Equipment>> describeInBackground(const EquipmentChange& change) {
    return inBackground<Equipment>([&](auto done) { engine_->describe(3, change, done); });
  }
  std::future<Granted<std::vector<JobView>>> setTimeZoneInBackground(const std::string& zone) {
    return inBackground<std::vector<JobView>>([&](auto done) { engine_->setTimeZone(zone, done); });
  }
  std::future<Granted<JobView>> cancelInBackground(std::uint64_t id) {
    return inBackground<JobView>([&](auto done) { engine_->cancelJob(id, done); });
  }

  dme_test::DiskFaults disk_;
};

// ----- Giving a job up ----------------------------------------------------------------------

TEST_F(NotStoredTest, Cancel_TheJobIsCarriedOut) {
  const std::uint64_t id = ordered(forSlot(JobVerb::kLogLevel, 3));
  disk_.fill();
  EXPECT_EQ(refusalOf(cancel(*engine_, id)), kNotStored);
  freeDisk();
  EXPECT_EQ(engine_->job(id)->state, JobState::kAccepted);
  gateway_->admit(3);
  gateway_->succeed(gateway_->waitForStage(1));
  waitFor(id, JobState::kSucceeded);
}

TEST_F(NotStoredTest, Cancel_TheJobIsThereAfterARestart) {
  const std::uint64_t id = ordered(forSlot(JobVerb::kLogLevel, 3));
  disk_.fill();
  EXPECT_EQ(refusalOf(cancel(*engine_, id)), kNotStored);
  disk_.release();  // the disk is written again when the engine stops
  open();
  EXPECT_EQ(engine_->job(id)->state, JobState::kAccepted);
}

TEST_F(NotStoredTest, Cancel_IsNotShownToThoseWhoWatch) {
  const std::uint64_t id = ordered(forSlot(JobVerb::kLogLevel, 3));
  auto seen = std::make_shared<std::promise<JobView>>();
  engine_->watchJob(id, engine_->job(id)->revision,
                    [seen](const JobView& job) { seen->set_value(job); });
  disk_.fill();
  EXPECT_EQ(refusalOf(cancel(*engine_, id)), kNotStored);
  freeDisk();
  EXPECT_EQ(seen->get_future().get().state, JobState::kAccepted);
}

TEST_F(NotStoredTest, CancelOfAJobThatIsDueBehind_FailsInTime) {
  const std::uint64_t id = ordered(forSlot(JobVerb::kLogLevel, 3));
  disk_.fill();
  EXPECT_EQ(refusalOf(cancel(*engine_, id)), kNotStored);
  freeDisk();
  pass(minutes(5));
  EXPECT_EQ(waitFor(id, JobState::kFailed).reason, JobReason::kDeliverByPast);
}

TEST_F(NotStoredTest, CancelOfAnUnknownEnd_TheLateAnswerStillCounts) {
  const std::uint64_t id = overdue();
  disk_.fill();
  EXPECT_EQ(refusalOf(cancel(*engine_, id)), kNotStored);
  freeDisk();
  EXPECT_EQ(engine_->job(id)->state, JobState::kUnknown);
  gateway_->succeed(gateway_->waitForStage(1));
  waitFor(id, JobState::kSucceeded);
}

TEST_F(NotStoredTest, CancelAgain_CanBeStoredLater) {
  const std::uint64_t id = ordered(forSlot(JobVerb::kLogLevel, 3));
  disk_.fill();
  EXPECT_EQ(refusalOf(cancel(*engine_, id)), kNotStored);
  EXPECT_EQ(refusalOf(cancel(*engine_, id)), kNotStored);
  freeDisk();
  const auto cancelled = cancel(*engine_, id);
  ASSERT_TRUE(cancelled) << refusalOf(cancelled);
  EXPECT_EQ(cancelled->reason, JobReason::kCancelled);
  EXPECT_EQ(engine_->job(id)->state, JobState::kFailed);
  EXPECT_EQ(engine_->job(id)->revision, cancelled->revision);
  EXPECT_TRUE(order(*engine_, forSlot(JobVerb::kLogLevel, 3)));
}

TEST_F(NotStoredTest, WhileACancelIsOnItsWay_TheJobIsStillInTheWay) {
  const std::uint64_t id = ordered(forSlot(JobVerb::kLogLevel, 3));
  disk_.hold();
  auto cancelled = cancelInBackground(id);
  ASSERT_TRUE(disk_.waitUntilHeld());
  EXPECT_TRUE(
      refusalOf(order(*engine_, forSlot(JobVerb::kLogLevel, 3))).starts_with("jobInTheWay"));
  EXPECT_EQ(refusalOf(cancel(*engine_, id)), "wrongState: job 1 is being given up");
  disk_.release();
  EXPECT_TRUE(cancelled.get());
  EXPECT_TRUE(order(*engine_, forSlot(JobVerb::kLogLevel, 3)));
}

TEST_F(NotStoredTest, WhileACancelIsOnItsWay_TheJobIsNotSent) {
  const std::uint64_t id = ordered(forSlot(JobVerb::kLogLevel, 3));
  gateway_->admit(4);
  disk_.hold();
  auto cancelled = cancelInBackground(id);
  ASSERT_TRUE(disk_.waitUntilHeld());
  pass(seconds(1));
  disk_.release();
  EXPECT_TRUE(cancelled.get());
  gateway_->admit(3);
  settle();
  EXPECT_TRUE(gateway_->stages().empty());
  EXPECT_EQ(engine_->job(id)->reason, JobReason::kCancelled);
}

TEST_F(NotStoredTest, CancelOfAJobWhoseEndIsNotStored_IsRefused) {
  const std::uint64_t id = ordered(forSlot(JobVerb::kLogLevel, 3));
  disk_.fill();
  pass(minutes(5));
  EXPECT_EQ(refusalOf(cancel(*engine_, id)), "notStored: the end of job 1 is not stored yet");
  freeDisk();
  EXPECT_EQ(waitFor(id, JobState::kFailed).reason, JobReason::kDeliverByPast);
}

TEST_F(NotStoredTest, TimeZone_TheEarlierOneIsStillTold) {
  for (const std::uint32_t slot : {1U, 2U, 3U, 4U, 5U}) {
    gateway_->admit(slot);
  }
  const auto jobs = dme_test::setTimeZone(*engine_, "Europe/Berlin");
  ASSERT_TRUE(jobs);
  gateway_->waitForStages(4);  // and the fifth waits for its turn
  disk_.fill();
  EXPECT_EQ(refusalOf(dme_test::setTimeZone(*engine_, "Asia/Tokyo")), kNotStored);
  freeDisk();
  EXPECT_EQ(engine_->timeZone(), "Europe/Berlin");
  for (std::size_t i = 1; i <= 5; ++i) {
    gateway_->succeed(gateway_->waitForStage(i));
  }
  EXPECT_EQ(waitFor(jobs->back().id, JobState::kSucceeded).argument, "Europe/Berlin");
}

// ----- Values -------------------------------------------------------------------------------

TEST_F(NotStoredTest, Describe_TheEarlierValueIsThere) {
  ASSERT_TRUE(dme_test::describe(*engine_, 3, {"left", {}, {}}));
  disk_.fill();
  EXPECT_EQ(refusalOf(dme_test::describe(*engine_, 3, {"right", {}, {}})), kNotStored);
  freeDisk();
  EXPECT_EQ(engine_->equipment(3)->name, "left");
  open();
  EXPECT_EQ(engine_->equipment(3)->name, "left");
}

TEST_F(NotStoredTest, TwoDescribesAtOnce_TheStoredValueIsThere) {
  ASSERT_TRUE(dme_test::describe(*engine_, 3, {"left", {}, {}}));
  disk_.hold();
  auto first = describeInBackground({"right", {}, {}});
  ASSERT_TRUE(disk_.waitUntilHeld());
  auto second = describeInBackground({"middle", {}, {}});
  disk_.fill();
  EXPECT_EQ(refusalOf(first.get()), kNotStored);
  EXPECT_EQ(refusalOf(second.get()), kNotStored);
  freeDisk();
  EXPECT_EQ(engine_->equipment(3)->name, "left");
}

TEST_F(NotStoredTest, DescribeBeforeOneThatIsStored_TheLaterValueIsThere) {
  ASSERT_TRUE(dme_test::describe(*engine_, 3, {"left", {}, {}}));
  disk_.hold();
  auto first = describeInBackground({"right", {}, {}});
  ASSERT_TRUE(disk_.waitUntilHeld());
  auto second = describeInBackground({"middle", {}, {}});
  disk_.refuseOnce();
  disk_.release();
  EXPECT_EQ(refusalOf(first.get()), kNotStored);
  EXPECT_TRUE(second.get());
  freeDisk();
  EXPECT_EQ(engine_->equipment(3)->name, "middle");
}

TEST_F(NotStoredTest, DescribeBeforeOneOfAnotherField_OnlyItsOwnIsTakenBack) {
  ASSERT_TRUE(dme_test::describe(*engine_, 3, {"left", {}, {}}));
  disk_.hold();
  auto first = describeInBackground({"right", {}, {}});
  ASSERT_TRUE(disk_.waitUntilHeld());
  auto second = describeInBackground({{}, {}, "B9"});
  disk_.refuseOnce();
  disk_.release();
  EXPECT_EQ(refusalOf(first.get()), kNotStored);
  EXPECT_TRUE(second.get());
  freeDisk();
  EXPECT_EQ(engine_->equipment(3), (Equipment{"left", "", "B9"}));
}

TEST_F(NotStoredTest, TwoTimeZonesAtOnce_TheStoredOneIsThere) {
  ASSERT_TRUE(dme_test::setTimeZone(*engine_, "Europe/Berlin"));
  disk_.hold();
  auto first = setTimeZoneInBackground("Asia/Tokyo");
  ASSERT_TRUE(disk_.waitUntilHeld());
  auto second = setTimeZoneInBackground("Europe/Rome");
  disk_.fill();
  EXPECT_EQ(refusalOf(first.get()), kNotStored);
  EXPECT_EQ(refusalOf(second.get()), kNotStored);
  freeDisk();
  EXPECT_EQ(engine_->timeZone(), "Europe/Berlin");
}

// ----- Application instances ----------------------------------------------------------------

TEST_F(NotStoredTest, Delete_TheInstanceIsThereAsItWas) {
  describe("a1", 3);
  const auto before = engine_->model(mo::Dn("sys/chassis-1/slot-3"));
  disk_.fill();
  EXPECT_EQ(refusalOf(dme_test::remove(*engine_, "a1")), kNotStored);
  freeDisk();
  EXPECT_TRUE(engine_->model(mo::Dn("sys/chassis-1/slot-3")) == before);
  open();
  gateway_->admit(3);
  EXPECT_TRUE(order(*engine_, forApp(JobVerb::kInstall, "a1"))) << "with all that it needs";
}

TEST_F(NotStoredTest, WhileADeleteIsOnItsWay_NoOtherOfThatNameIsMade) {
  describe("a1", 3);
  disk_.hold();
  auto removed = inBackground<AppView>([&](auto done) { engine_->deleteApp("a1", done); });
  ASSERT_TRUE(disk_.waitUntilHeld());
  EXPECT_EQ(refusalOf(dme_test::create(*engine_, 4, dme_test::instance("a1"))),
            "alreadyThere: application instance a1 is being deleted");
  EXPECT_EQ(refusalOf(order(*engine_, forApp(JobVerb::kInstall, "a1"))),
            "unknownApp: there is no application instance 'a1'");
  disk_.release();
  EXPECT_TRUE(removed.get());
  EXPECT_TRUE(dme_test::create(*engine_, 4, dme_test::instance("a1")));
}

TEST_F(NotStoredTest, WhileACreateIsOnItsWay_NothingIsOrderedOfIt) {
  disk_.hold();
  auto created = inBackground<AppView>(
      [&](auto done) { engine_->createApp(3, dme_test::instance("a1"), done); });
  ASSERT_TRUE(disk_.waitUntilHeld());
  const std::string unknown = "unknownApp: there is no application instance 'a1'";
  EXPECT_EQ(refusalOf(order(*engine_, forApp(JobVerb::kInstall, "a1"))), unknown);
  EXPECT_EQ(refusalOf(engine_->wouldOrder(forApp(JobVerb::kInstall, "a1"))), unknown);
  EXPECT_EQ(refusalOf(dme_test::remove(*engine_, "a1")), unknown);
  disk_.fill();
  EXPECT_EQ(refusalOf(created.get()), kNotStored);
  freeDisk();
  EXPECT_FALSE(engine_->app("a1"));
  EXPECT_TRUE(dme_test::create(*engine_, 4, dme_test::instance("a1")));
}

}  // namespace
}  // namespace dme
