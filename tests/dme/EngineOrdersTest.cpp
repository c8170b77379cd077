#include <gtest/gtest.h>

#include "tests/dme/support/Orders.h"
#include "tests/dme/support/TempDirectory.h"

// What an operator asks of an engine to which no gateway is connected.

namespace dme {
namespace {

using dme_test::cancel;
using dme_test::create;
using dme_test::forApp;
using dme_test::forSlot;
using dme_test::instance;
using dme_test::order;
using dme_test::refusalOf;
using std::chrono::milliseconds;
using std::chrono::seconds;

class EngineOrders : public testing::Test {
 protected:
  void SetUp() override { open(); }

  void open() {
    engine_.reset();
    dme_test::writeBytes(directory_.file("chassis.toml"),
                         "[chassis]\nserial = \"C1\"\n[[slot]]\nnumber = 3\nserial = \"B3\"\n"
                         "apps = [{id = \"old\"}]\n[[slot]]\nnumber = 4\n");
    EngineConfig config{directory_.file("state"),
                        directory_.file("chassis.toml"),
                        "ipc://" + directory_.file("engine.ipc"),
                        {seconds(1), 3, seconds(30)}};
    config.wallClock = [] {
      return std::uint64_t{1700000000000};
    };
    auto engine = Engine::open(config);
    ASSERT_TRUE(engine) << engine.error().text;
    engine_ = std::move(*engine);
    ASSERT_TRUE(engine_->start());
  }

  dme_test::TempDirectory directory_;
  std::unique_ptr<Engine> engine_;
};

TEST_F(EngineOrders, Order_IsSeenWhenItIsTakenAndSurvives) {
  ASSERT_TRUE(create(*engine_, 3, instance("a1")));
  const Granted<JobView> job = order(*engine_, forApp(JobVerb::kInstall, "a1"));
  ASSERT_TRUE(job) << refusalOf(job);
  EXPECT_EQ(job->id, 1u);
  EXPECT_EQ(job->target, "sys/chassis-1/slot-3/app-a1");
  EXPECT_EQ(job->slot, 3u);
  EXPECT_EQ(job->state, JobState::kAccepted);
  EXPECT_EQ(job->acceptedAt, 1700000000000u);
  EXPECT_EQ(job->deliverBy, 1700000300000u);
  const std::optional<JobView> seen = engine_->job(1);
  ASSERT_TRUE(seen);
  EXPECT_GE(seen->revision, job->revision);
  EXPECT_EQ(engine_->app("a1")->job, 1u);

  open();
  ASSERT_TRUE(engine_->job(1));
  EXPECT_EQ(engine_->job(1)->state, JobState::kAccepted);
  EXPECT_EQ(engine_->job(1)->app, "a1");
  EXPECT_EQ(engine_->app("a1")->job, 1u);
}

TEST_F(EngineOrders, WouldOrder_SaysTheSameAndDoesNothing) {
  ASSERT_TRUE(create(*engine_, 3, instance("a1")));
  const Granted<JobView> would = engine_->wouldOrder(forApp(JobVerb::kInstall, "a1"));
  ASSERT_TRUE(would);
  EXPECT_EQ(would->id, 0u);
  EXPECT_EQ(would->verb, JobVerb::kInstall);
  EXPECT_TRUE(engine_->jobs({}).empty());
  EXPECT_EQ(refusalOf(engine_->wouldOrder(forApp(JobVerb::kStart, "a1"))),
            "wrongState: application instance a1 is absent");
}

TEST_F(EngineOrders, Cancelled_Fails) {
  ASSERT_TRUE(order(*engine_, forSlot(JobVerb::kLogLevel, 3)));
  EXPECT_EQ(refusalOf(cancel(*engine_, 2)), "unknownJob: there is no job 2");
  const Granted<JobView> cancelled = cancel(*engine_, 1);
  ASSERT_TRUE(cancelled);
  EXPECT_EQ(cancelled->state, JobState::kFailed);
  EXPECT_EQ(cancelled->reason, JobReason::kCancelled);
  EXPECT_EQ(engine_->job(1)->state, JobState::kFailed);
  EXPECT_EQ(engine_->job(1)->finishedAt, 1700000000000u);
  EXPECT_EQ(refusalOf(cancel(*engine_, 1)), "wrongState: job 1 is failed");
}

TEST_F(EngineOrders, Jobs_AreListedTheLatestFirstAndFiltered) {
  ASSERT_TRUE(create(*engine_, 4, instance("a1")));
  ASSERT_TRUE(order(*engine_, forSlot(JobVerb::kLogLevel, 3)));
  ASSERT_TRUE(order(*engine_, forSlot(JobVerb::kClearSystemLogs, 3)));
  ASSERT_TRUE(order(*engine_, forApp(JobVerb::kInstall, "a1")));
  ASSERT_TRUE(cancel(*engine_, 2));
  const auto ids = [&](auto narrow) {
    JobFilter filter;
    narrow(filter);
    std::vector<std::uint64_t> found;
    for (const JobView& job : engine_->jobs(filter)) {
      found.push_back(job.id);
    }
    return found;
  };
  using Ids = std::vector<std::uint64_t>;
  EXPECT_EQ(ids([](JobFilter&) {}), (Ids{3, 2, 1}));
  EXPECT_EQ(ids([](JobFilter& filter) { filter.slot = 3; }), (Ids{2, 1}));
  EXPECT_EQ(ids([](JobFilter& filter) { filter.app = "a1"; }), (Ids{3}));
  EXPECT_EQ(ids([](JobFilter& filter) { filter.states = {JobState::kAccepted}; }), (Ids{3, 1}));
  EXPECT_EQ(ids([](JobFilter& filter) { filter.before = 3; }), (Ids{2, 1}));
  EXPECT_EQ(ids([](JobFilter& filter) {
              filter.before = 3;
              filter.most = 1;
            }),
            (Ids{2}));
}

TEST_F(EngineOrders, Instances_ComeAndGo) {
  const Granted<AppView> made = create(*engine_, 4, instance("a1"));
  ASSERT_TRUE(made);
  EXPECT_EQ(made->dn, "sys/chassis-1/slot-4/app-a1");
  EXPECT_EQ(made->phase, AppPhase::kAbsent);
  EXPECT_EQ(made->packageFile, "fw-1.0.pkg");
  EXPECT_EQ(refusalOf(create(*engine_, 3, instance("a1"))),
            "alreadyThere: application instance a1 is in slot 4");
  EXPECT_EQ(refusalOf(create(*engine_, 5, instance("a2"))), "unknownSlot: there is no slot 5");
  EXPECT_EQ(engine_->apps(std::nullopt).size(), 2u);
  EXPECT_EQ(engine_->apps(3).size(), 1u);
  EXPECT_EQ(engine_->app("old")->phase, AppPhase::kAssumed);
  open();
  EXPECT_EQ(engine_->app("a1")->phase, AppPhase::kAbsent);
  ASSERT_TRUE(order(*engine_, forApp(JobVerb::kInstall, "a1")));
  EXPECT_EQ(refusalOf(dme_test::remove(*engine_, "a1")),
            "jobInTheWay: job 1 (install of a1) is accepted");
  ASSERT_TRUE(cancel(*engine_, 1));
  ASSERT_TRUE(engine_->wouldDeleteApp("a1"));
  ASSERT_TRUE(dme_test::remove(*engine_, "a1"));
  EXPECT_FALSE(engine_->app("a1"));
  open();
  EXPECT_FALSE(engine_->app("a1"));
  EXPECT_TRUE(engine_->model(mo::Dn("sys/chassis-1/slot-4/app-a1")).empty());
}

TEST_F(EngineOrders, TimeZone_IsCheckedAndKept) {
  EXPECT_EQ(engine_->timeZone(), "UTC");
  EXPECT_EQ(refusalOf(dme_test::setTimeZone(*engine_, "Europe/Nowhere")),
            "badValue: 'Europe/Nowhere' is no time zone");
  EXPECT_EQ(refusalOf(dme_test::setTimeZone(*engine_, "../etc/passwd\n")),
            "badValue: '../etc/passwd\\x0a' is no time zone");
  const auto jobs = dme_test::setTimeZone(*engine_, "Europe/Berlin");
  ASSERT_TRUE(jobs) << refusalOf(jobs);
  EXPECT_TRUE(jobs->empty()) << "no blade is registered";
  ASSERT_TRUE(dme_test::setTimeZone(*engine_, "Europe/Berlin")) << "nothing changes";
  open();
  EXPECT_EQ(engine_->timeZone(), "Europe/Berlin");
}

TEST_F(EngineOrders, Equipment_IsWrittenAnewAndKept) {
  EXPECT_EQ(engine_->equipment(std::nullopt), (Equipment{"", "", "C1"}));
  EXPECT_EQ(engine_->equipment(3), (Equipment{"", "", "B3"}));
  EXPECT_EQ(engine_->equipment(4), Equipment{}) << "nothing is known of its blade";
  EXPECT_EQ(dme_test::describe(*engine_, std::nullopt, {"upper", "M8", {}}),
            (Equipment{"upper", "M8", "C1"}));
  EXPECT_EQ(dme_test::describe(*engine_, 4, {{}, {}, "B4"}), (Equipment{"", "", "B4"}));
  EXPECT_EQ(dme_test::describe(*engine_, 3, {"left", {}, ""}), (Equipment{"left", "", ""}));
  open();
  EXPECT_EQ(engine_->equipment(std::nullopt), (Equipment{"upper", "M8", "C1"}));
  EXPECT_EQ(engine_->equipment(4), (Equipment{"", "", "B4"}));
  EXPECT_EQ(engine_->equipment(3), (Equipment{"left", "", ""}));
  EXPECT_EQ(engine_->slot(4)->serial, "B4");
}

TEST_F(EngineOrders, EquipmentThatWouldBe_IsNotWritten) {
  EXPECT_EQ(engine_->wouldDescribe(3, {{}, "b2", "B33"}), (Equipment{"", "b2", "B33"}));
  EXPECT_EQ(engine_->equipment(3), (Equipment{"", "", "B3"}));
}

TEST_F(EngineOrders, EquipmentThatCannotBe_IsRefusedByItsField) {
  const struct {
    EquipmentPlace place;
    EquipmentChange change;
    const char* refusal;
  } rows[] = {
      {5, {{}, {}, "B5"}, "unknownSlot: there is no slot 5"},
      {3, {{}, {}, "0"}, "badValue: '0' is no serial"},
      {3, {{}, "::", {}}, "badValue: '::' is no model"},
      {std::nullopt, {"a\nb", {}, {}}, "badValue: 'a\\x0ab' is no name"},
      {std::nullopt,
       {{}, {}, std::string(256, 's')},
       "badValue: 'ssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssssss' is no "
       "serial"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(refusalOf(dme_test::describe(*engine_, row.place, row.change)), row.refusal);
    EXPECT_EQ(refusalOf(engine_->wouldDescribe(row.place, row.change)), row.refusal);
  }
  EXPECT_EQ(engine_->equipment(3), (Equipment{"", "", "B3"}));
}

TEST_F(EngineOrders, Watch_TellsOnceWhatChanged) {
  ASSERT_TRUE(order(*engine_, forSlot(JobVerb::kLogLevel, 3)));
  const std::uint64_t revision = engine_->job(1)->revision;
  EXPECT_EQ(engine_->watchJob(2, 0, [](const JobView&) { FAIL(); }), 0u);
  std::vector<JobState> told;
  EXPECT_NE(engine_->watchJob(1, 0, [&](const JobView& job) { told.push_back(job.state); }), 0u);
  EXPECT_EQ(told, std::vector{JobState::kAccepted});
  engine_->watchJob(1, revision + 5, [](const JobView&) { FAIL(); });
  const auto unwanted = engine_->watchJob(1, revision + 5, [](const JobView&) { FAIL(); });
  engine_->unwatchJob(unwanted);
  std::promise<JobState> changed;
  engine_->watchJob(1, engine_->job(1)->revision,
                    [&](const JobView& job) { changed.set_value(job.state); });
  ASSERT_TRUE(cancel(*engine_, 1));
  EXPECT_EQ(changed.get_future().get(), JobState::kFailed);
}

TEST_F(EngineOrders, Stopped_Refuses) {
  engine_->stop();
  EXPECT_EQ(refusalOf(order(*engine_, forSlot(JobVerb::kLogLevel, 3))),
            "notStored: the engine is stopping");
}

// ----- Which jobs exclude each other ------------------------------------------------------------

TEST_F(EngineOrders, JobsInTheWay_AreThoseThatExcludeEachOther) {
  ASSERT_TRUE(create(*engine_, 3, instance("a1")));
  ASSERT_TRUE(create(*engine_, 3, instance("a2")));
  const struct {
    JobOrder first;
    JobOrder second;
    bool isRefused;
  } kCases[] = {
      {forApp(JobVerb::kInstall, "a1"), forApp(JobVerb::kInstall, "a1"), true},
      {forApp(JobVerb::kInstall, "a1"), forApp(JobVerb::kInstall, "a2"), false},
      {forApp(JobVerb::kUninstall, "old"), forApp(JobVerb::kStart, "old"), true},
      {forApp(JobVerb::kStop, "old"), forApp(JobVerb::kUninstall, "old"), true},
      {forApp(JobVerb::kStop, "old"), forApp(JobVerb::kClearAppLogs, "old"), false},
      {forApp(JobVerb::kClearAppLogs, "old"), forApp(JobVerb::kClearAppLogs, "old"), true},
      {forApp(JobVerb::kInstall, "a1"), forSlot(JobVerb::kLogLevel, 3), false},
      {forApp(JobVerb::kInstall, "a1"), forSlot(JobVerb::kFormatDisk, 3), true},
      {forSlot(JobVerb::kFormatDisk, 3), forApp(JobVerb::kInstall, "a1"), true},
      {forSlot(JobVerb::kFormatDisk, 4), forApp(JobVerb::kInstall, "a1"), false},
      {forSlot(JobVerb::kLogLevel, 3), forSlot(JobVerb::kDeregister, 3), true},
      {forSlot(JobVerb::kDeregister, 3), forSlot(JobVerb::kTimeZone, 3), true},
      {forSlot(JobVerb::kLogLevel, 3), forSlot(JobVerb::kLogLevel, 3), true},
      {forSlot(JobVerb::kLogLevel, 3), forSlot(JobVerb::kLogLevel, 4), false},
      {forSlot(JobVerb::kLogLevel, 3), forSlot(JobVerb::kClearSystemLogs, 3), false},
  };
  for (const auto& each : kCases) {
    SCOPED_TRACE(std::string(nameOf(each.first.verb)) + " and " +
                 std::string(nameOf(each.second.verb)));
    const auto first = order(*engine_, each.first);
    ASSERT_TRUE(first) << refusalOf(first);
    const auto second = engine_->wouldOrder(each.second);
    EXPECT_EQ(!second, each.isRefused) << refusalOf(second);
    ASSERT_TRUE(cancel(*engine_, first->id));
  }
}

TEST_F(EngineOrders, MoreThanTheyMayBe_AreRefused) {
  JobOrder order = forSlot(JobVerb::kLogLevel, 3);
  order.level = "loud";
  EXPECT_EQ(refusalOf(engine_->wouldOrder(order)), "badValue: 'loud' is no level");
  order.level = "info";
  order.deliverWithin = milliseconds(0);
  EXPECT_EQ(refusalOf(engine_->wouldOrder(order)), "badValue: deliverWithinMs is 0 milliseconds");
  EXPECT_EQ(refusalOf(engine_->wouldOrder(forSlot(JobVerb::kLogLevel, 99))),
            "unknownSlot: there is no slot 99");
  EXPECT_EQ(refusalOf(engine_->wouldOrder(forApp(JobVerb::kInstall, "no\nbody"))),
            "unknownApp: there is no application instance 'no\\x0abody'");
  EXPECT_EQ(refusalOf(engine_->wouldOrder(forApp(JobVerb::kInstall, "old"))),
            "badValue: install needs app.packageFile, which application instance old lacks");
  for (const char* const id : {"", "0", "::", "a b", "a/b", "a\n"}) {
    EXPECT_EQ(create(*engine_, 3, instance(id)).error().field, "id") << id;
  }
  EXPECT_EQ(create(*engine_, 3, instance(std::string(129, 'a'))).error().field, "id");
  auto foreign = instance("a1");
  foreign->attach(std::make_unique<sd::SlotMo>());
  EXPECT_EQ(refusalOf(create(*engine_, 3, std::move(foreign))),
            "badValue: slot is no part of an application instance");
}

}  // namespace
}  // namespace dme
