#include "sma/BladeAgent.h"

#include <gtest/gtest.h>

#include <vector>

namespace sma {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// A blade, a clock to turn, and what the blade has sent.
class BladeAgentTest : public testing::Test {
 protected:
  BladeAgent::Settings settings() {
    BladeAgent::Settings settings;
    settings.slot = 3;
    settings.port = 20003;
    settings.beat = seconds(1);
    settings.seed = 0;
    return settings;
  }

  BladeAgent blade(BladeAgent::Settings settings) { return BladeAgent(std::move(settings), now_); }

  void runUntil(BladeAgent& agent, BladeAgent::Duration offset) {
    const auto end = start_ + offset;
    while (agent.due() <= end) {
      now_ = std::max(now_, agent.due());
      agent.onTime(now_, [this](const msglyr::Message& message) {
        if (connected_) {
          sent_.push_back(message);
        }
        return connected_;
      });
    }
    now_ = end;
  }

  void answer(BladeAgent& agent, const std::string& id, const std::string& status,
              const std::string& token = "", const std::string& message = "") {
    agent.onMessage(msglyr::Message(std::vector<std::string>{
                        "sma_slot3.x", "nox-xml:1", id, status,
                        "<r><response><code>0</code><message>" + message +
                            "</message></response><token>" + token + "</token></r>"}),
                    now_);
  }

  /// What has been sent under a subject, in order.
  std::vector<msglyr::Message> sentAs(const std::string& subject) const {
    std::vector<msglyr::Message> all;
    for (const msglyr::Message& message : sent_) {
      if (message[0] == subject) {
        all.push_back(message);
      }
    }
    return all;
  }

  void registerWith(BladeAgent& agent, const std::string& token) {
    runUntil(agent, milliseconds(0));
    answer(agent, sent_.back()[2], "100", token);
  }

  const BladeAgent::TimePoint start_ = BladeAgent::TimePoint() + seconds(1000);
  BladeAgent::TimePoint now_ = start_;
  bool connected_ = true;
  std::vector<msglyr::Message> sent_;
};

TEST_F(BladeAgentTest, Fresh_RegistersAtOnceWithoutToken) {
  auto agent = blade(settings());
  runUntil(agent, milliseconds(0));
  ASSERT_EQ(sent_.size(), 1U);
  EXPECT_EQ(sent_[0][0], "serviceOrchAG.register");
  EXPECT_NE(sent_[0][4].find("<token/>"), std::string::npos) << sent_[0][4];
}

TEST_F(BladeAgentTest, Accepted_KeepsTheTokenAndBeats) {
  auto agent = blade(settings());
  registerWith(agent, "t1");
  EXPECT_EQ(agent.state(), BladeAgent::State::Registered);
  EXPECT_EQ(agent.token(), "t1");
  for (int beat = 1; beat <= 3; ++beat) {
    runUntil(agent, milliseconds(beat * 1000));
    ASSERT_EQ(agent.counts().sent(RequestKind::Beat), static_cast<std::uint64_t>(beat));
    answer(agent, sent_.back()[2], "100");
  }
  EXPECT_EQ(sent_.back()[0], "serviceOrchAG.heartbeat");
  EXPECT_NE(sent_.back()[4].find("<count>3</count>"), std::string::npos);
}

TEST_F(BladeAgentTest, ToldToRetry_RegistersAgainAfterAPauseWithoutTakingTheToken) {
  auto agent = blade(settings());
  runUntil(agent, milliseconds(0));
  answer(agent, sent_.back()[2], "510", "t1");
  EXPECT_EQ(agent.token(), "");
  runUntil(agent, milliseconds(200));
  EXPECT_EQ(sent_.size(), 1U);
  runUntil(agent, milliseconds(500));
  ASSERT_EQ(sent_.size(), 2U);
  EXPECT_EQ(sent_[1][0], "serviceOrchAG.register");
}

TEST_F(BladeAgentTest, BeatRefusedAsUnregistered_RegistersAgainWithItsToken) {
  auto agent = blade(settings());
  registerWith(agent, "t1");
  runUntil(agent, seconds(1));
  answer(agent, sent_.back()[2], "510");
  EXPECT_EQ(agent.state(), BladeAgent::State::Unregistered);
  runUntil(agent, seconds(2));
  EXPECT_EQ(sent_.back()[0], "serviceOrchAG.register");
  EXPECT_NE(sent_.back()[4].find("<token>t1</token>"), std::string::npos);
}

TEST_F(BladeAgentTest, ForeignToken_IsRefusedAndKept) {
  auto with = settings();
  with.token = "foreign";
  auto agent = blade(with);
  runUntil(agent, milliseconds(0));
  answer(agent, sent_.back()[2], "511", "t1");
  EXPECT_EQ(agent.state(), BladeAgent::State::Refused);
  EXPECT_EQ(agent.token(), "foreign");
}

TEST_F(BladeAgentTest, NoReplyToABeat_CountsAndTriesAgainLater) {
  auto agent = blade(settings());
  registerWith(agent, "t1");
  runUntil(agent, seconds(1));
  ASSERT_EQ(agent.counts().sent(RequestKind::Beat), 1U);
  runUntil(agent, seconds(6));
  EXPECT_EQ(agent.counts().unanswered(), 1U);
  runUntil(agent, milliseconds(6600));
  EXPECT_EQ(agent.counts().sent(RequestKind::Beat), 2U);
}

TEST_F(BladeAgentTest, LateReply_IsAStrayAndChangesNothing) {
  auto agent = blade(settings());
  registerWith(agent, "t1");
  runUntil(agent, seconds(1));
  const std::string id = sent_.back()[2];
  runUntil(agent, seconds(6));
  answer(agent, id, "510");
  EXPECT_EQ(agent.counts().strays, 1U);
  EXPECT_EQ(agent.state(), BladeAgent::State::Registered);
}

TEST_F(BladeAgentTest, SecondReplyToOneRequest_IsAStray) {
  auto agent = blade(settings());
  registerWith(agent, "t1");
  answer(agent, sent_.back()[2], "100", "t2");
  EXPECT_EQ(agent.counts().strays, 1U);
  EXPECT_EQ(agent.token(), "t1");
}

TEST_F(BladeAgentTest, NoConnection_BacksOff) {
  connected_ = false;
  auto agent = blade(settings());
  runUntil(agent, seconds(10));
  EXPECT_GE(agent.counts().unsent, 4U);
  EXPECT_LE(agent.counts().unsent, 8U);
  EXPECT_EQ(agent.counts().sent(RequestKind::Register), 0U);
}

TEST_F(BladeAgentTest, Silence_SendsNothingWhileItLasts) {
  auto with = settings();
  with.events.push_back({milliseconds(30), Silence{seconds(5)}, {}});
  auto agent = blade(with);
  registerWith(agent, "t1");
  runUntil(agent, milliseconds(5029));
  EXPECT_EQ(agent.counts().sent(RequestKind::Beat), 0U);
  runUntil(agent, milliseconds(5030));
  EXPECT_EQ(agent.counts().sent(RequestKind::Beat), 1U);
}

TEST_F(BladeAgentTest, DuplicateBeats_AreSentTwiceWithOneCount) {
  auto with = settings();
  with.events.push_back({milliseconds(0), DuplicateBeats{seconds(2)}, {}});
  auto agent = blade(with);
  registerWith(agent, "t1");
  runUntil(agent, seconds(1));
  ASSERT_EQ(sent_.size(), 3U);
  EXPECT_EQ(sent_[1][4], sent_[2][4]);
  EXPECT_NE(sent_[1][2], sent_[2][2]);
}

TEST_F(BladeAgentTest, WrongTokenInMidLife_RegistersWithAnother) {
  auto with = settings();
  with.events.push_back({milliseconds(2030), ChangeToken{}, {}});
  auto agent = blade(with);
  registerWith(agent, "t1");
  runUntil(agent, seconds(1));
  answer(agent, sent_.back()[2], "100");
  runUntil(agent, seconds(2));
  answer(agent, sent_.back()[2], "100");
  runUntil(agent, milliseconds(2030));
  EXPECT_EQ(sent_.back()[0], "serviceOrchAG.register");
  EXPECT_NE(sent_.back()[4].find("<token>foreign-0</token>"), std::string::npos);
}

TEST_F(BladeAgentTest, OddRequest_UnansweredIsCountedApart) {
  auto with = settings();
  with.events.push_back({milliseconds(100), SendOdd{oddRequestByName("foreign-subject"), 2}, {}});
  auto agent = blade(with);
  registerWith(agent, "t1");
  runUntil(agent, milliseconds(950));
  EXPECT_EQ(agent.counts().sent(RequestKind::Odd), 2U);
  runUntil(agent, seconds(2));
  EXPECT_EQ(agent.counts().of(RequestKind::Odd).unanswered, 2U);
  EXPECT_EQ(agent.counts().unanswered(), 0U);
}

constexpr const char* kReport = "serviceOrchAG.platformInfo.update";
constexpr const char* kFailure = "serviceOrchAG.appFailure";
constexpr const char* kProgress = "serviceOrchAG.commandProgress.update";

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

// --- expectations of single replies

class BladeExpectation : public BladeAgentTest {
 protected:
  BladeAgent::Settings expecting(ExpectedReply expected, unsigned times = 1) {
    auto with = settings();
    with.events.push_back({milliseconds(500), SendOdd{oddRequestByName("progress-no-ack"), times},
                           std::move(expected)});
    return with;
  }
};

TEST_F(BladeExpectation, ReplyAsExpected_IsNoDisappointment) {
  auto agent = blade(expecting({false, 505, "No <ack> tag found"}));
  registerWith(agent, "t1");
  runUntil(agent, milliseconds(500));
  answer(agent, sentAs(kProgress)[0][2], "505", "", "No &lt;ack&gt; tag found");
  EXPECT_TRUE(agent.disappointments().empty());
}

TEST_F(BladeExpectation, OtherReply_IsQuotedBesideTheExpectedOne) {
  auto agent = blade(expecting({false, 505, "No <ack> tag found"}));
  registerWith(agent, "t1");
  runUntil(agent, milliseconds(500));
  answer(agent, sentAs(kProgress)[0][2], "505", "", "other");
  ASSERT_EQ(agent.disappointments().size(), 1U);
  EXPECT_EQ(agent.disappointments()[0],
            "progress-no-ack at 0.5 s got 505 \"other\", expected 505 \"No <ack> tag found\"");
}

TEST_F(BladeExpectation, NoReply_DisappointsWhoExpectedOne) {
  auto agent = blade(expecting({false, 505, {}}));
  registerWith(agent, "t1");
  runUntil(agent, milliseconds(15'499));
  ASSERT_EQ(agent.disappointments().size(), 1U);
  EXPECT_EQ(agent.disappointments()[0],
            "progress-no-ack at 0.5 s had 0 of 1 replies judged when the run ended");
  runUntil(agent, milliseconds(15'500));
  ASSERT_EQ(agent.disappointments().size(), 1U);
  EXPECT_EQ(agent.disappointments()[0], "progress-no-ack at 0.5 s got no reply, expected 505");
}

TEST_F(BladeExpectation, NoReplyExpected_HoldsWhenNoneComesAndNotElse) {
  auto agent = blade(expecting({true, {}, {}}, 2));
  registerWith(agent, "t1");
  runUntil(agent, milliseconds(500));
  answer(agent, sentAs(kProgress)[0][2], "100", "", "OK");
  runUntil(agent, milliseconds(1500));
  ASSERT_EQ(agent.disappointments().size(), 1U);
  EXPECT_EQ(agent.disappointments()[0],
            "progress-no-ack at 0.5 s got 100 \"OK\", expected no reply");
}

TEST_F(BladeExpectation, Unsent_Disappoints) {
  auto agent = blade(expecting({true, {}, {}}));
  registerWith(agent, "t1");
  connected_ = false;
  runUntil(agent, milliseconds(1500));
  ASSERT_EQ(agent.disappointments().size(), 1U);
  EXPECT_EQ(agent.disappointments()[0], "progress-no-ack at 0.5 s could not be sent");
  EXPECT_TRUE(agent.isJudged());
}

TEST_F(BladeExpectation, RequestBeforeTheRegistration_WaitsForItUnlessItIsEarly) {
  auto with = expecting({false, 505, {}});
  auto early = std::get<SendOdd>(with.events[0].what);
  early.early = true;
  with.events.push_back({milliseconds(600), early, {}});
  auto agent = blade(with);
  runUntil(agent, seconds(3));
  EXPECT_EQ(sentAs(kProgress).size(), 1U);
  EXPECT_FALSE(agent.isJudged());
  answer(agent, sent_.front()[2], "100", "t1");
  runUntil(agent, seconds(3));
  ASSERT_EQ(sentAs(kProgress).size(), 2U);
  answer(agent, sentAs(kProgress)[1][2], "505");
  EXPECT_TRUE(agent.isJudged());
  EXPECT_TRUE(agent.disappointments().empty());
}

}  // namespace
}  // namespace sma
