#include "sma/tasks/Reporter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sma {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::ElementsAre;

/// A blade of three instances and what its reporter says, each report being answered at once.
class ReporterTest : public testing::Test {
 protected:
  void playUntil(Reporter& reporter, milliseconds end) {
    while (reporter.due() <= origin_ + end) {
      now_ = std::max(now_, reporter.due());
      while (auto request = reporter.next(now_)) {
        if (request->kind == RequestKind::Report) {
          reporter.onReportEnd();
        }
        said_.push_back(text(*request));
        requests_.push_back(std::move(*request));
      }
    }
    now_ = origin_ + end;
  }

  std::string text(const Reporter::Request& request) const {
    Element document = request.document;
    std::string text{kKindNames[static_cast<std::size_t>(request.kind)].name};
    for (const char* tag : {"appInstanceId", "operCmd", "operProgress"}) {
      if (const Element* found = document.find(tag); found != nullptr) {
        text += " " + found->text;
      }
    }
    return text;
  }

  std::size_t said(const std::string& start) const {
    return static_cast<std::size_t>(
        std::count_if(said_.begin(), said_.end(),
                      [&start](const std::string& each) { return each.starts_with(start); }));
  }

  const Reporter::TimePoint origin_ = Reporter::TimePoint() + seconds(1000);
  Reporter::TimePoint now_ = origin_;
  BladePlatform platform_{1, 3, 3};
  std::vector<std::string> said_;
  std::vector<Reporter::Request> requests_;
};

TEST_F(ReporterTest, NeverAsked_SaysNothing) {
  Reporter reporter({}, platform_, origin_);
  reporter.start(now_);
  EXPECT_EQ(reporter.due(), Reporter::TimePoint::max());
}

TEST_F(ReporterTest, Regular_ReportsFromReportToReport) {
  Reporter reporter({.every = seconds(10), .first = seconds(1)}, platform_, origin_);
  reporter.start(now_);
  playUntil(reporter, seconds(31));
  EXPECT_EQ(said_.size(), 4U);
}

TEST_F(ReporterTest, LongPause_IsNotMadeUpFor) {
  Reporter reporter({.every = seconds(10)}, platform_, origin_);
  reporter.start(now_);
  now_ = origin_ + seconds(100);
  playUntil(reporter, seconds(105));
  EXPECT_EQ(said_.size(), 1U);
  EXPECT_EQ(reporter.due(), origin_ + seconds(110));
}

TEST_F(ReporterTest, ReportUnderWay_HoldsTheNextOneBack) {
  Reporter reporter({.every = seconds(10)}, platform_, origin_);
  reporter.start(now_);
  ASSERT_TRUE(reporter.next(origin_));
  EXPECT_EQ(reporter.due(), Reporter::TimePoint::max());
  EXPECT_FALSE(reporter.next(origin_ + seconds(20)));
  reporter.onReportEnd();
  EXPECT_TRUE(reporter.next(origin_ + seconds(20)));
}

TEST_F(ReporterTest, FailedInstance_IsStartedAgainAfterAWhile) {
  Reporter reporter({}, platform_, origin_);
  reporter.failApp("slot3-app2", seconds(5), now_, {});
  playUntil(reporter, milliseconds(4999));
  EXPECT_THAT(said_, ElementsAre("failures slot3-app2"));
  EXPECT_FALSE(platform_.apps()[1].running);
  playUntil(reporter, seconds(9));
  EXPECT_THAT(said_,
              ElementsAre("failures slot3-app2", "progress slot3-app2 startApp 0",
                          "progress slot3-app2 startApp 25", "progress slot3-app2 startApp 50",
                          "progress slot3-app2 startApp 75", "progress slot3-app2 startApp 100"));
  EXPECT_TRUE(platform_.apps()[1].running);
  EXPECT_EQ(reporter.due(), Reporter::TimePoint::max());
}

TEST_F(ReporterTest, FailedForGood_StaysStopped) {
  Reporter reporter({}, platform_, origin_);
  reporter.failApp("slot3-app2", seconds(0), now_, {});
  playUntil(reporter, seconds(3600));
  EXPECT_THAT(said_, ElementsAre("failures slot3-app2"));
  EXPECT_FALSE(platform_.apps()[1].running);
}

TEST_F(ReporterTest, Requests_CarryTheEventTheyComeFrom) {
  Reporter reporter({}, platform_, origin_);
  reporter.report(4);
  reporter.failApp("x", seconds(0), now_, 5);
  OperationPlan plan;
  plan.steps = 1;
  reporter.run(plan, now_, 6);
  playUntil(reporter, seconds(10));
  ASSERT_EQ(requests_.size(), 4U);
  EXPECT_EQ(requests_[0].event, 4U);
  EXPECT_EQ(requests_[1].event, 5U);
  EXPECT_EQ(requests_[2].event, 6U);
  EXPECT_EQ(requests_[3].event, 6U);
}

TEST_F(ReporterTest, AskedReport_ShowsTheStateWhenItIsSent) {
  Reporter reporter({}, platform_, origin_);
  reporter.report({});
  platform_.change({.id = "slot3-app1", .version = "9"});
  playUntil(reporter, seconds(0));
  EXPECT_EQ(requests_.at(0).document.find("application/installedVersion")->text, "9");
}

TEST_F(ReporterTest, FailuresByChance_ComeAboutAsOftenAsAsked) {
  Reporter reporter({.every = seconds(10), .failChance = 0.1, .seed = 7}, platform_, origin_);
  reporter.start(now_);
  playUntil(reporter, seconds(20'000));
  // 2,000 reports; an instance that is down cannot fail again.
  EXPECT_GT(said("failures"), 120U);
  EXPECT_LT(said("failures"), 240U);
  EXPECT_EQ(said("progress"), 5 * said("failures"));
}

TEST_F(ReporterTest, WorkByChance_LeavesHotFixesAndSometimesFails) {
  Reporter reporter({.every = seconds(10), .workChance = 0.2, .seed = 7}, platform_, origin_);
  reporter.start(now_);
  playUntil(reporter, seconds(20'000));
  EXPECT_GT(said("progress"), 500U);
  EXPECT_GT(said("quiet_progress"), 500U);
  EXPECT_EQ(said("failures"), 0U);
  EXPECT_TRUE(platform_.apps()[0].hotfixes.starts_with("HF-"));
  EXPECT_TRUE(std::any_of(requests_.begin(), requests_.end(), [](Reporter::Request& each) {
    const Element* status = each.document.find("operStatus");
    return status != nullptr && status->text == "failed";
  }));
}

TEST_F(ReporterTest, SameSeed_SaysTheSame) {
  const Reporter::Settings settings{
      .every = seconds(10), .failChance = 0.2, .workChance = 0.2, .seed = 7};
  std::vector<std::vector<std::string>> runs;
  for (int run = 0; run < 2; ++run) {
    now_ = origin_;
    BladePlatform platform(1, 3, 3);
    Reporter reporter(settings, platform, origin_);
    reporter.start(now_);
    playUntil(reporter, seconds(2000));
    runs.push_back(std::exchange(said_, {}));
  }
  EXPECT_EQ(runs[0], runs[1]);
  EXPECT_GT(runs[0].size(), 200U);
}

}  // namespace
}  // namespace sma
