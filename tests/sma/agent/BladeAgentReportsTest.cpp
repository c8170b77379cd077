#include <gtest/gtest.h>

#include <chrono>

#include "tests/sma/agent/BladeAgentHarness.h"

// What a blade tells of itself.

namespace sma {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

TEST_F(BladeAgentTest, Registered_ReportsItsPlatformEverySoOften) {
  auto with = settings();
  with.apps = 2;
  with.reports.every = seconds(10);
  with.reports.first = milliseconds(200);
  auto agent = blade(with);
  runUntil(agent, milliseconds(0));
  EXPECT_EQ(sentAs(kReport).size(), 0U);
  answer(agent, sent_.back()[2], "100", "t1");
  runUntil(agent, milliseconds(199));
  EXPECT_EQ(sentAs(kReport).size(), 0U);
  runUntil(agent, milliseconds(200));
  ASSERT_EQ(sentAs(kReport).size(), 1U);
  EXPECT_NE(sentAs(kReport)[0][4].find("<appInstanceId>slot3-app2<"), std::string::npos);
  answer(agent, sentAs(kReport)[0][2], "100");
  runUntil(agent, milliseconds(10'199));
  EXPECT_EQ(sentAs(kReport).size(), 1U);
  runUntil(agent, milliseconds(10'200));
  EXPECT_EQ(sentAs(kReport).size(), 2U);
  EXPECT_EQ(agent.counts().of(RequestKind::Report).statuses.at(100), 1U);
}

TEST_F(BladeAgentTest, ReportUnanswered_IsGivenUpBeforeTheNextOneAndBeatsGoOn) {
  auto with = settings();
  with.reports.every = seconds(10);
  auto agent = blade(with);
  registerWith(agent, "t1");
  for (int second = 1; second <= 14; ++second) {
    runUntil(agent, seconds(second));
    answer(agent, sentAs("serviceOrchAG.heartbeat").back()[2], "100");
  }
  EXPECT_EQ(sentAs(kReport).size(), 1U);
  EXPECT_EQ(agent.counts().sent(RequestKind::Beat), 14U);
  EXPECT_EQ(agent.counts().of(RequestKind::Report).unanswered, 0U);
  runUntil(agent, seconds(15));
  EXPECT_EQ(agent.counts().of(RequestKind::Report).unanswered, 1U);
  EXPECT_EQ(sentAs(kReport).size(), 2U);
}

TEST_F(BladeAgentTest, ReportRefusedAsUnregistered_RegistersAgain) {
  auto with = settings();
  with.reports.every = seconds(10);
  auto agent = blade(with);
  registerWith(agent, "t1");
  runUntil(agent, milliseconds(0));
  answer(agent, sentAs(kReport)[0][2], "510");
  EXPECT_EQ(agent.state(), BladeAgent::State::Unregistered);
  runUntil(agent, seconds(30));
  EXPECT_EQ(sentAs(kReport).size(), 1U) << "reports while it is not registered";
}

TEST_F(BladeAgentTest, Failure_IsReportedAndTheInstanceStopsInTheNextReport) {
  auto with = settings();
  with.apps = 2;
  with.reports.every = seconds(2);
  with.reports.first = seconds(2);
  with.events.push_back({seconds(1), FailApp{AppRef{2, ""}, {}}, {}});
  auto agent = blade(with);
  registerWith(agent, "t1");
  runUntil(agent, seconds(2));
  ASSERT_EQ(sentAs(kFailure).size(), 1U);
  EXPECT_EQ(sentAs(kFailure)[0][4],
            "<appFailureRequest><appInstanceId>slot3-app2</appInstanceId></appFailureRequest>");
  ASSERT_EQ(sentAs(kReport).size(), 1U);
  EXPECT_NE(sentAs(kReport)[0][4].find("<operStatus>stopped<"), std::string::npos);
  EXPECT_EQ(agent.counts().sent(RequestKind::Failure), 1U);
}

TEST_F(BladeAgentTest, HappeningsBeforeTheRegistration_WaitForIt) {
  auto with = settings();
  with.events.push_back({milliseconds(0), FailApp{AppRef{1, "x"}, {}}, {}});
  auto agent = blade(with);
  runUntil(agent, milliseconds(100));
  EXPECT_EQ(sentAs(kFailure).size(), 0U);
  answer(agent, sent_.back()[2], "100", "t1");
  runUntil(agent, milliseconds(100));
  EXPECT_EQ(sentAs(kFailure).size(), 1U);
}

TEST_F(BladeAgentTest, QuietProgress_AwaitsNothing) {
  auto with = settings();
  OperationPlan plan;
  plan.steps = 2;
  plan.ack = false;
  with.events.push_back({milliseconds(0), RunOperation{AppRef{}, plan}, {}});
  auto agent = blade(with);
  registerWith(agent, "t1");
  runUntil(agent, seconds(20));
  EXPECT_EQ(sentAs(kProgress).size(), 3U);
  EXPECT_EQ(agent.counts().sent(RequestKind::QuietProgress), 3U);
  answer(agent, sentAs(kProgress)[0][2], "100");
  EXPECT_EQ(agent.counts().strays, 1U);
}

}  // namespace
}  // namespace sma
