#include "sma/agent/BladeAgent.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>

#include "tests/sma/agent/BladeAgentHarness.h"

namespace sma {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

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
  with.membership.token = "foreign";
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

}  // namespace
}  // namespace sma
