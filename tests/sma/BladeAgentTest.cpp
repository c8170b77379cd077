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
              const std::string& token = "") {
    agent.onMessage(msglyr::Message(std::vector<std::string>{
                        "sma_slot3.x", "nox-xml:1", id, status,
                        "<r><response><code>0</code></response><token>" + token + "</token></r>"}),
                    now_);
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
    ASSERT_EQ(agent.counts().beats, static_cast<std::uint64_t>(beat));
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
  ASSERT_EQ(agent.counts().beats, 1U);
  runUntil(agent, seconds(6));
  EXPECT_EQ(agent.counts().unanswered, 1U);
  runUntil(agent, milliseconds(6600));
  EXPECT_EQ(agent.counts().beats, 2U);
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
  EXPECT_EQ(agent.counts().registers, 0U);
}

TEST_F(BladeAgentTest, Silence_SendsNothingWhileItLasts) {
  auto with = settings();
  with.faults.push_back({Fault::Silence, milliseconds(30), seconds(5), 1});
  auto agent = blade(with);
  registerWith(agent, "t1");
  runUntil(agent, milliseconds(5029));
  EXPECT_EQ(agent.counts().beats, 0U);
  runUntil(agent, milliseconds(5030));
  EXPECT_EQ(agent.counts().beats, 1U);
}

TEST_F(BladeAgentTest, DuplicateBeats_AreSentTwiceWithOneCount) {
  auto with = settings();
  with.faults.push_back({Fault::DuplicateBeats, milliseconds(0), seconds(2), 1});
  auto agent = blade(with);
  registerWith(agent, "t1");
  runUntil(agent, seconds(1));
  ASSERT_EQ(sent_.size(), 3U);
  EXPECT_EQ(sent_[1][4], sent_[2][4]);
  EXPECT_NE(sent_[1][2], sent_[2][2]);
}

TEST_F(BladeAgentTest, WrongTokenInMidLife_RegistersWithAnother) {
  auto with = settings();
  with.faults.push_back({Fault::WrongToken, milliseconds(2030), {}, 1});
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
  with.faults.push_back({Fault::ForeignSubject, milliseconds(100), {}, 2});
  auto agent = blade(with);
  registerWith(agent, "t1");
  runUntil(agent, milliseconds(950));
  EXPECT_EQ(agent.counts().odd, 2U);
  runUntil(agent, seconds(2));
  EXPECT_EQ(agent.counts().oddUnanswered, 2U);
  EXPECT_EQ(agent.counts().unanswered, 0U);
}

}  // namespace
}  // namespace sma
