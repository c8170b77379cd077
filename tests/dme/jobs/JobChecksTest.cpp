#include "dme/jobs/JobChecks.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <set>
#include <string>

#include "tests/dme/support/Orders.h"
#include "tests/dme/support/TempDirectory.h"

// Which orders become jobs, what those jobs are, and what is said of the others.

namespace dme {
namespace {

using dme_test::forApp;
using dme_test::forSlot;
using dme_test::instance;
using dme_test::refusalOf;
using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

constexpr std::uint64_t kNow = 1700000000000;

base::ChassisDescription description() {
  base::ChassisDescription chassis;
  chassis.serial = "C1";
  chassis.slots.push_back({3, "", {{"old", "", base::ChassisDescription::App::State::kAny}}, "B3"});
  chassis.slots.push_back({4, "", {}});
  return chassis;
}

class JobChecksTest : public testing::Test {
 protected:
  JobChecksTest() {
    EXPECT_TRUE(catalog_.create(3, *instance("a1")));
    EXPECT_TRUE(catalog_.create(4, *instance("a4")));
  }
  ~JobChecksTest() override { store_->close(); }

  void setPhase(const std::string& id, AppPhase phase) {
    catalog_.setPhase(*catalog_.find(id), phase);
  }
  Granted<Job> plan(const JobOrder& order) const { return checks_.plan(order, kNow); }
  /// The refusal of this order.
  Refusal refused(const JobOrder& order) const {
    Granted<Job> job = plan(order);
    EXPECT_FALSE(job);
    return job ? Refusal() : job.error();
  }
  static JobOrder upgrade(const std::string& packageFile, const std::string& version = "2.0") {
    JobOrder order = forApp(JobVerb::kUpgrade, "old");
    order.packageFile = packageFile;
    order.version = version;
    return order;
  }

  dme_test::TempDirectory directory_;
  std::unique_ptr<ObjectStore> store_ = std::move(*ObjectStore::open(directory_.path()));
  Chassis chassis_{*store_, description()};
  ReportCounters counters_;
  AppInstances instances_{*store_, chassis_, counters_};
  AppCatalog catalog_{*store_, chassis_, instances_};
  TimeSetting time_{*store_};
  JobTable jobs_{*store_};
  JobChecks checks_{*store_, chassis_, catalog_, time_, jobs_, {}};
};

// ----- Phases ---------------------------------------------------------------------------------

TEST_F(JobChecksTest, Verbs_AreForTheirPhases) {
  using enum AppPhase;
  const struct {
    JobVerb verb;
    std::set<AppPhase> phases;
  } rows[] = {{JobVerb::kInstall, {kAbsent, kAssumed, kUnsure}},
              {JobVerb::kUninstall, {kStopped, kAssumed, kUnsure}},
              {JobVerb::kStart, {kStopped, kAssumed, kUnsure}},
              {JobVerb::kStop, {kStarted, kAssumed, kUnsure}},
              {JobVerb::kUpgrade, {kAssumed, kUnsure, kStopped, kStarted}},
              {JobVerb::kClearAppLogs, {kAssumed, kUnsure, kStopped, kStarted}}};
  for (const auto& row : rows) {
    for (const AppPhase phase : {kAssumed, kAbsent, kUnsure, kStopped, kStarted}) {
      SCOPED_TRACE(std::string(nameOf(row.verb)) + " when " + std::string(nameOf(phase)));
      setPhase("a1", phase);
      JobOrder order = forApp(row.verb, "a1");
      order.packageFile = "fw-2.0.pkg";
      const Granted<Job> job = plan(order);
      EXPECT_EQ(refusalOf(job),
                row.phases.contains(phase)
                    ? "granted"
                    : "wrongState: application instance a1 is " + std::string(nameOf(phase)));
      if (job) {
        EXPECT_EQ(job->phaseBefore, phase);
      } else {
        EXPECT_FALSE(job.error().remedy.empty());
      }
    }
  }
}

TEST_F(JobChecksTest, WrongPhase_TellsWhatToDoInstead) {
  const struct {
    JobVerb verb;
    AppPhase phase;
    const char* remedy;
  } rows[] = {
      {JobVerb::kInstall, AppPhase::kStopped, "upgrade it, or uninstall it first"},
      {JobVerb::kInstall, AppPhase::kStarted, "upgrade it, or stop and uninstall it first"},
      {JobVerb::kUninstall, AppPhase::kAbsent,
       "there is nothing to uninstall: delete its description if it is not wanted"},
      {JobVerb::kUninstall, AppPhase::kStarted, "stop it first"},
      {JobVerb::kUpgrade, AppPhase::kAbsent, "install it with the new package instead"},
      {JobVerb::kStart, AppPhase::kAbsent, "install it first"},
      {JobVerb::kStart, AppPhase::kStarted, "stop it first to start it anew"},
      {JobVerb::kStop, AppPhase::kAbsent, "install and start it first"},
      {JobVerb::kStop, AppPhase::kStopped, "there is nothing to stop"},
      {JobVerb::kClearAppLogs, AppPhase::kAbsent, "install it first"},
  };
  for (const auto& row : rows) {
    setPhase("a1", row.phase);
    EXPECT_EQ(refused(forApp(row.verb, "a1")).remedy, row.remedy);
  }
}

// ----- Times ----------------------------------------------------------------------------------

TEST_F(JobChecksTest, EachVerb_HasItsTimes) {
  const struct {
    JobVerb verb;
    milliseconds finishWithin;
  } rows[] = {{JobVerb::kInstall, seconds(360)},        {JobVerb::kUninstall, seconds(260)},
              {JobVerb::kUpgrade, seconds(160)},        {JobVerb::kStart, seconds(120)},
              {JobVerb::kStop, seconds(120)},           {JobVerb::kClearAppLogs, seconds(30)},
              {JobVerb::kLogLevel, seconds(30)},        {JobVerb::kFormatDisk, minutes(15)},
              {JobVerb::kClearSystemLogs, seconds(30)}, {JobVerb::kTimeZone, seconds(30)},
              {JobVerb::kDeregister, seconds(30)}};
  setPhase("a1", AppPhase::kUnsure);
  for (const auto& row : rows) {
    JobOrder order = isForApp(row.verb) ? forApp(row.verb, "a1") : forSlot(row.verb, 3);
    order.packageFile = "fw-2.0.pkg";
    const Granted<Job> job = plan(order);
    ASSERT_TRUE(job) << nameOf(row.verb);
    EXPECT_EQ(job->finishWithin, row.finishWithin) << nameOf(row.verb);
    EXPECT_EQ(job->view.acceptedAt, kNow);
    EXPECT_EQ(job->view.deliverBy, kNow + 300000);
  }
}

TEST_F(JobChecksTest, InstanceThatTellsNoTime_HasFiveMinutesAndOneMore) {
  const Granted<Job> job = plan(forApp(JobVerb::kUninstall, "old"));
  ASSERT_TRUE(job) << refusalOf(job);
  EXPECT_EQ(job->finishWithin, seconds(360));
}

TEST_F(JobChecksTest, TimesOfTheOrder_TakeTheirPlaceWithinBounds) {
  const std::pair<const char*, std::optional<milliseconds> JobOrder::*> fields[] = {
      {"deliverWithinMs", &JobOrder::deliverWithin}, {"finishWithinMs", &JobOrder::finishWithin}};
  for (const auto& [name, field] : fields) {
    for (const milliseconds time : {milliseconds(1), milliseconds(hours(7 * 24))}) {
      JobOrder order = forSlot(JobVerb::kLogLevel, 3);
      order.*field = time;
      const Granted<Job> job = plan(order);
      ASSERT_TRUE(job) << refusalOf(job);
      EXPECT_EQ(field == &JobOrder::finishWithin ? job->finishWithin
                                                 : milliseconds(job->view.deliverBy - kNow),
                time);
    }
    for (const milliseconds time :
         {milliseconds(0), milliseconds(-1), milliseconds(hours(7 * 24)) + milliseconds(1)}) {
      JobOrder order = forSlot(JobVerb::kLogLevel, 3);
      order.*field = time;
      const Refusal refusal = refused(order);
      EXPECT_EQ(refusal.field, name);
      EXPECT_EQ(refusal.detail,
                std::string(name) + " is " + std::to_string(time.count()) + " milliseconds");
      EXPECT_EQ(refusal.remedy, "give 1 to 604800000");
    }
  }
}

// ----- Values ---------------------------------------------------------------------------------

TEST_F(JobChecksTest, Upgrade_NeedsAPackageThatCanBeTold) {
  for (const std::string& misfit : {std::string(), std::string("0"), std::string("::"),
                                    std::string("a\nb"), std::string(256, 'a')}) {
    EXPECT_EQ(refused(upgrade(misfit)).field, "packageFile") << misfit;
  }
  EXPECT_EQ(refused(upgrade("fw-2.0.pkg", "2\t0")).field, "version");
  EXPECT_EQ(refused(upgrade("fw-2.0.pkg", std::string(256, '2'))).field, "version");
}

TEST_F(JobChecksTest, Upgrade_IsOfThePackageThatWasOrdered) {
  JobOrder order = upgrade("fw-2.0.pkg");
  order.app = "a1";
  setPhase("a1", AppPhase::kStopped);
  const Granted<Job> job = plan(order);
  ASSERT_TRUE(job) << refusalOf(job);
  EXPECT_EQ(job->view.argument, "fw-2.0.pkg");
  EXPECT_EQ(job->version, "2.0");
}

TEST_F(JobChecksTest, OrderOfAnInstance_IsForTheSlotThatItIsIn) {
  JobOrder order = forApp(JobVerb::kInstall, "a4");
  order.slot = 3;
  const Granted<Job> job = plan(order);
  ASSERT_TRUE(job) << refusalOf(job);
  EXPECT_EQ(job->view.slot, 4u);
  EXPECT_EQ(job->view.target, "sys/chassis-1/slot-4/app-a4");
}

TEST_F(JobChecksTest, OrdersOfASlot_HaveTheirArgument) {
  time_.setZone("Asia/Tokyo");
  JobOrder level = forSlot(JobVerb::kLogLevel, 3);
  level.level = "critical";
  EXPECT_EQ(plan(level)->view.argument, "critical");
  EXPECT_EQ(plan(forSlot(JobVerb::kTimeZone, 3))->view.argument, "Asia/Tokyo");
  EXPECT_EQ(plan(forSlot(JobVerb::kFormatDisk, 3))->view.argument, "");
}

TEST_F(JobChecksTest, MissingValue_TellsWhereItBelongs) {
  setPhase("a4", AppPhase::kStopped);
  Refusal refusal = refused(forApp(JobVerb::kStart, "a4"));
  EXPECT_EQ(refusal.field, "blade.serial");
  EXPECT_EQ(refusal.detail, "start needs blade.serial, which the chassis' description lacks");
  EXPECT_EQ(refusal.remedy, "add it to the chassis file and start with an empty state directory");
  refusal = refused(forApp(JobVerb::kInstall, "old"));
  EXPECT_EQ(refusal.field, "app.packageFile");
  EXPECT_EQ(refusal.remedy, "delete the instance and describe it with that value");
}

TEST_F(JobChecksTest, IdentifierThatNoCommandCanCarry_IsRefused) {
  base::ChassisDescription chassis = description();
  chassis.slots[0].apps[0].id = "an old one";
  dme_test::TempDirectory directory;
  const auto store = std::move(*ObjectStore::open(directory.path()));
  Chassis described(*store, chassis);
  AppInstances instances(*store, described, counters_);
  AppCatalog catalog(*store, described, instances);
  const JobChecks checks(*store, described, catalog, time_, jobs_, {});
  const Granted<Job> job = checks.plan(forApp(JobVerb::kStop, "an old one"), kNow);
  EXPECT_EQ(refusalOf(job), "badValue: 'an old one' cannot be told to a blade");
  store->close();
}

// ----- Jobs in the way ------------------------------------------------------------------------

TEST_F(JobChecksTest, JobInTheWay_TellsWhatToDoAboutIt) {
  Job& other = jobs_.add(*plan(forApp(JobVerb::kInstall, "a1")));
  const struct {
    JobState state;
    const char* remedy;
  } rows[] = {{JobState::kAccepted, "wait until it is over, or cancel it"},
              {JobState::kSending, "wait until it is over"},
              {JobState::kRunning, "wait until it is over"},
              {JobState::kUnknown, "wait for the blade's next report, or cancel job 1"}};
  for (const auto& row : rows) {
    other.view.state = row.state;
    const Refusal refusal = refused(forSlot(JobVerb::kFormatDisk, 3));
    EXPECT_EQ(refusal.reason, Refusal::Reason::kJobInTheWay);
    EXPECT_EQ(refusal.detail, "job 1 (install of a1) is " + std::string(nameOf(row.state)));
    EXPECT_EQ(refusal.remedy, row.remedy);
    EXPECT_EQ(refusal.job, 1u);
  }
}

TEST_F(JobChecksTest, UnknownEndThatNoReportSettles_IsNotInTheWay) {
  Job& level = jobs_.add(*plan(forSlot(JobVerb::kLogLevel, 3)));
  EXPECT_FALSE(plan(forSlot(JobVerb::kLogLevel, 3)));
  level.view.state = JobState::kUnknown;
  EXPECT_TRUE(plan(forSlot(JobVerb::kLogLevel, 3)));
}

TEST_F(JobChecksTest, BehindItsLike_OnlyItsLikeIsPassedOver) {
  const auto queued = [this](JobVerb verb) {
    return checks_.plan(forSlot(verb, 3), kNow, JobChecks::Queue::kBehindItsLike);
  };
  jobs_.add(*plan(forSlot(JobVerb::kTimeZone, 3)));
  EXPECT_FALSE(plan(forSlot(JobVerb::kTimeZone, 3)));
  EXPECT_TRUE(queued(JobVerb::kTimeZone));
  EXPECT_FALSE(queued(JobVerb::kDeregister));
}

}  // namespace
}  // namespace dme
