#include <gtest/gtest.h>

#include <chrono>
#include <utility>
#include <variant>

#include "tests/sma/agent/BladeAgentHarness.h"

// Expectations of single replies.

namespace sma {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

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
