#include "sma/agent/Membership.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

namespace sma {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using State = Membership::State;

const Membership::TimePoint kStart = Membership::TimePoint() + seconds(1000);

Reply verdict(unsigned status, const std::string& token = "") {
  Reply reply;
  reply.status = status;
  reply.token = token;
  reply.zedPubKey = "key" + std::to_string(status);
  return reply;
}

class MembershipTest : public testing::Test {
 protected:
  static Membership::Settings settings() {
    Membership::Settings settings;
    settings.port = 20003;
    settings.beat = seconds(2);
    settings.firstPause = milliseconds(100);
    settings.mostPause = milliseconds(800);
    return settings;
  }

  static Membership member(std::string token = "", std::uint64_t seed = 0) {
    Membership::Settings with = settings();
    with.token = std::move(token);
    return {with, 3, seed, kStart};
  }

  /// One that was accepted at the start, and keeps the token.
  static Membership registered(std::uint64_t seed = 0) {
    Membership member = MembershipTest::member("t1", seed);
    member.onSent(kStart);
    EXPECT_TRUE(member.onRegisterReply(verdict(100, "t1"), kStart));
    return member;
  }

  /// It comes back after a pause as after `failures` failures in a row.
  static void expectPause(const Membership& member, Membership::TimePoint now, int failures) {
    const milliseconds most =
        std::min(milliseconds(100) * (1 << (failures - 1)), milliseconds(800));
    EXPECT_GE(member.due() - now, most / 2);
    EXPECT_LE(member.due() - now, most);
  }
};

// --- to register

TEST_F(MembershipTest, Fresh_RegistersAtOnce) {
  const Membership member = MembershipTest::member("held");
  EXPECT_EQ(member.state(), State::Unregistered);
  EXPECT_EQ(member.due(), kStart);
  const auto request = member.request();
  EXPECT_EQ(request.kind, RequestKind::Register);
  EXPECT_EQ(request.wait, seconds(25));
  EXPECT_NE(toXml(request.document).find("<token>held</token>"), std::string::npos)
      << toXml(request.document);
}

TEST_F(MembershipTest, Sent_SendsNothingMoreUntilTheReply) {
  Membership member = MembershipTest::member();
  member.onSent(kStart);
  EXPECT_EQ(member.due(), Membership::TimePoint::max());
  EXPECT_TRUE(member.onRegisterReply(verdict(100, "t1"), kStart));
  EXPECT_LT(member.due(), Membership::TimePoint::max());
}

TEST_F(MembershipTest, Accepted_LeavesTheTokenToTheCaller) {
  Membership member = MembershipTest::member();
  member.onSent(kStart);
  EXPECT_TRUE(member.onRegisterReply(verdict(100, "t1"), kStart));
  EXPECT_EQ(member.state(), State::Registered);
  EXPECT_EQ(member.gatewayKey(), "key100");
  EXPECT_EQ(member.token(), "");
  member.keep("t1");
  EXPECT_EQ(member.token(), "t1");
}

TEST_F(MembershipTest, NotRecognised_IsRefusedAndAsksAgain) {
  Membership member = MembershipTest::member("foreign");
  member.onSent(kStart);
  EXPECT_FALSE(member.onRegisterReply(verdict(511), kStart));
  EXPECT_EQ(member.state(), State::Refused);
  EXPECT_EQ(member.gatewayKey(), "key511");
  EXPECT_EQ(member.request().kind, RequestKind::Register);
  expectPause(member, kStart, 1);
}

TEST_F(MembershipTest, ToldToRetry_StaysUnregisteredAndPausesGrow) {
  Membership member = MembershipTest::member();
  for (int failures = 1; failures <= 5; ++failures) {
    member.onSent(kStart);
    EXPECT_FALSE(member.onRegisterReply(verdict(510), kStart));
    EXPECT_EQ(member.state(), State::Unregistered);
    expectPause(member, kStart, failures);
  }
}

TEST_F(MembershipTest, NeitherSentNorAnswered_BacksOff) {
  Membership member = MembershipTest::member();
  member.onFailure(kStart);
  expectPause(member, kStart, 1);
  member.onSent(kStart);
  member.onFailure(kStart);
  expectPause(member, kStart, 2);
}

TEST_F(MembershipTest, VerdictOnAnotherToken_IsPassedOverAndAskedForAnew) {
  Membership member = MembershipTest::member("old");
  member.onSent(kStart);
  member.keep("new");
  const auto now = kStart + seconds(1);
  EXPECT_FALSE(member.onRegisterReply(verdict(511), now));
  EXPECT_EQ(member.state(), State::Unregistered);
  EXPECT_EQ(member.due(), now);
  member.onSent(now);
  EXPECT_TRUE(member.onRegisterReply(verdict(100, "new"), now));
}

// --- to beat

TEST_F(MembershipTest, FirstBeat_ComesWithinOneIntervalByTheSeed) {
  EXPECT_EQ(registered(0).due(), kStart + milliseconds(125));
  EXPECT_EQ(registered(3).due(), kStart + milliseconds(500));
  EXPECT_EQ(registered(15).due(), kStart + seconds(2));
  EXPECT_EQ(registered(16).due(), kStart + milliseconds(125));
}

TEST_F(MembershipTest, Beats_AreCountedFromOneAndKeepTheRate) {
  Membership member = registered();
  const auto first = member.due();
  for (int beat = 1; beat <= 3; ++beat) {
    const auto request = member.request();
    EXPECT_EQ(request.kind, RequestKind::Beat);
    EXPECT_EQ(request.wait, seconds(5));
    EXPECT_EQ(toXml(request.document), toXml(heartbeatDocument(static_cast<unsigned>(beat), 2)));
    member.onSent(member.due());
    member.onBeatReply(100, kStart + seconds(60));  // however late the reply
    EXPECT_EQ(member.due(), first + beat * seconds(2));
  }
}

TEST_F(MembershipTest, BeatsThatAPauseSwallowed_AreNotMadeUpFor) {
  Membership member = registered();
  const auto late = member.due() + seconds(60);
  member.onSent(late);
  member.onBeatReply(100, late);
  EXPECT_EQ(member.due(), late + seconds(2));
}

TEST_F(MembershipTest, BeatThatWasNotSent_IsNotCounted) {
  Membership member = registered();
  const auto now = member.due();
  const std::string document = toXml(member.request().document);
  member.onFailure(now);
  EXPECT_EQ(toXml(member.request().document), document);
  EXPECT_EQ(member.state(), State::Registered);
  expectPause(member, now, 1);
}

TEST_F(MembershipTest, BeatReply_TellsOfTheStanding) {
  for (const auto& [status, state] :
       {std::pair(100U, State::Registered), std::pair(500U, State::Registered),
        std::pair(510U, State::Unregistered), std::pair(511U, State::Refused)}) {
    Membership member = registered();
    member.onSent(kStart);
    member.onBeatReply(status, kStart);
    EXPECT_EQ(member.state(), state) << status;
    if (state != State::Registered) {
      expectPause(member, kStart, 1);
    }
  }
}

TEST_F(MembershipTest, OtherReply_TellsOfTheStandingAndLeavesTheBeatUnderWay) {
  Membership member = registered();
  member.onSent(kStart);
  member.onOtherReply(510, kStart);
  EXPECT_EQ(member.state(), State::Unregistered);
  EXPECT_EQ(member.due(), Membership::TimePoint::max());
  member.onBeatReply(511, kStart);  // it has been told already
  EXPECT_EQ(member.state(), State::Unregistered);
  expectPause(member, kStart, 1);
}

TEST_F(MembershipTest, Success_EndsTheGrowthOfPauses) {
  Membership member = registered();
  member.onFailure(kStart);
  member.onFailure(kStart);
  member.onOtherReply(100, kStart);
  member.onFailure(kStart);
  expectPause(member, kStart, 1);
}

// --- to begin anew

TEST_F(MembershipTest, Restart_RegistersWithTheTokenHeldThen) {
  Membership member = registered();
  member.keep("other");
  member.restart(kStart + seconds(1));
  EXPECT_EQ(member.state(), State::Unregistered);
  EXPECT_EQ(member.due(), kStart + seconds(1));
  EXPECT_NE(toXml(member.request().document).find("<token>other</token>"), std::string::npos);
}

TEST_F(MembershipTest, Restart_AwaitsWhatIsUnderWay) {
  Membership member = registered();
  member.onSent(kStart);
  member.restart(kStart);
  EXPECT_EQ(member.due(), Membership::TimePoint::max());
}

TEST_F(MembershipTest, Forget_LeavesNothingUnderWayAndNoFailuresBehind) {
  Membership member = registered();
  member.onFailure(kStart);
  member.onFailure(kStart);
  member.onSent(kStart);
  member.forget(kStart + seconds(5));
  EXPECT_EQ(member.state(), State::Unregistered);
  EXPECT_EQ(member.token(), "t1");
  EXPECT_EQ(member.due(), kStart + seconds(5));
  member.onFailure(kStart);
  expectPause(member, kStart, 1);
}

TEST_F(MembershipTest, State_HasAName) {
  EXPECT_STREQ(stateName(State::Unregistered), "unregistered");
  EXPECT_STREQ(stateName(State::Registered), "registered");
  EXPECT_STREQ(stateName(State::Refused), "refused");
}

}  // namespace
}  // namespace sma
