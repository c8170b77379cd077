#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "tests/support/ExpectedReply.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingSvc.h"

namespace zan_serviceOrchAG {
namespace {

using serviceorchapi::UpdateSmaHeartbeatMe;
using test_support::LogCapture;
using test_support::LogLine;
using test_support::RecordingSvc;
using testing::ElementsAre;

class Heartbeat : public testing::Test {
 protected:
  /// Handles a heartbeat, which always ends in an OK.
  void handle(const std::string& document, int slot = 3) {
    log_.clear();
    const std::unique_ptr<Response> response(
        handler_.AG_heartbeatReqCb("id-1", "", document, slot));
    test_support::expectReply(response.get(), "heartbeatResponse", 100, "OK");
  }

  RecordingSvc svc_;
  LogCapture log_;
  MsgHandler handler_;
};

const LogLine kTriggering{1, "AG_heartbeatReqCb",
                          "Triggering UpdateSmaHeartbeat method for slot : 3, Message ID : id-1"};

TEST_F(Heartbeat, Counters_ReachTheEngineWithoutAWait) {
  handle("<heartbeatRequest><count>7</count><timer>30</timer></heartbeatRequest>");
  EXPECT_THAT(svc_.calls<UpdateSmaHeartbeatMe>(), ElementsAre(std::tuple(3U, 7U, 30U)));
  ASSERT_EQ(1U, svc_.sent().size());
  EXPECT_FALSE(svc_.sent()[0].responseRequired);
  EXPECT_EQ(4, static_cast<int>(svc_.sent()[0].priority));
  EXPECT_FALSE(svc_.sent()[0].cookie.empty());
  EXPECT_EQ(0U, handler_.knownCookies());
  EXPECT_THAT(log_.lines(), ElementsAre(kTriggering));
}

TEST_F(Heartbeat, Call_IsAnnouncedBeforeItIsMade) {
  std::vector<LogLine> announced;
  svc_.onSend([&](const RecordingSvc::Sent&) { announced = log_.lines(); });
  handle("<heartbeatRequest><count>7</count><timer>30</timer></heartbeatRequest>");
  EXPECT_THAT(announced, ElementsAre(kTriggering));
}

TEST_F(Heartbeat, EachCall_HasItsOwnCookie) {
  handle("<heartbeatRequest/>");
  handle("<heartbeatRequest/>");
  ASSERT_EQ(2U, svc_.sent().size());
  EXPECT_NE(svc_.sent()[0].cookie, svc_.sent()[1].cookie);
}

TEST_F(Heartbeat, NoCounters_AreLoggedAndSentAsZero) {
  handle("<heartbeatRequest/>");
  EXPECT_THAT(svc_.calls<UpdateSmaHeartbeatMe>(), ElementsAre(std::tuple(3U, 0U, 0U)));
  EXPECT_THAT(
      log_.lines(),
      ElementsAre(LogLine{5, "missingTagError", "No <count> tag found in the heartbeat request"},
                  LogLine{5, "missingTagError", "No <timer> tag found in the heartbeat request"},
                  kTriggering));
}

TEST_F(Heartbeat, NoDocument_CountsAsOneWithoutCounters) {
  for (const std::string& document :
       {std::string(), std::string("no document"), std::string("<registerRequest/>"),
        std::string("\xff\xfe"), std::string(2 * 1024 * 1024, 'x')}) {
    handle(document);
    EXPECT_EQ(1U, log_.count(5, "No <count> tag found in the heartbeat request"));
  }
  EXPECT_EQ(5U, svc_.sent().size());
}

TEST_F(Heartbeat, BlanksAroundANumber_AreTrimmed) {
  handle("<heartbeatRequest><count> 12 </count><timer>\n007\t</timer></heartbeatRequest>");
  EXPECT_THAT(svc_.calls<UpdateSmaHeartbeatMe>(), ElementsAre(std::tuple(3U, 12U, 7U)));
}

struct NoCounter {
  const char* sent;
  const char* logged;
};

class NoCounters : public Heartbeat, public testing::WithParamInterface<NoCounter> {};

TEST_P(NoCounters, Timer_IsLoggedAndSentAsZero) {
  handle(std::string("<heartbeatRequest><count>1</count><timer>") + GetParam().sent +
         "</timer></heartbeatRequest>");
  EXPECT_THAT(svc_.calls<UpdateSmaHeartbeatMe>(), ElementsAre(std::tuple(3U, 1U, 0U)));
  ASSERT_EQ(2U, log_.lines().size());
  EXPECT_EQ(8, log_.lines()[0].level);
  EXPECT_EQ("AG_heartbeatReqCb", log_.lines()[0].function);
  EXPECT_THAT(log_.lines()[0].text,
              testing::StartsWith(std::string("Heartbeat exception caught for slot[3]: timer[") +
                                  GetParam().logged + "] : "));
  EXPECT_THAT(log_.lines()[0].text, testing::Not(testing::EndsWith(" : ")));
}

INSTANTIATE_TEST_SUITE_P(All, NoCounters,
                         testing::Values(NoCounter{"", ""}, NoCounter{"abc", "abc"},
                                         NoCounter{" 12abc ", "12abc"}, NoCounter{"-5", "-5"},
                                         NoCounter{"+5", "+5"}, NoCounter{"1 2", "1 2"},
                                         NoCounter{"4294967296", "4294967296"},
                                         NoCounter{"0x10", "0x10"}, NoCounter{"%s%n", "%s%n"},
                                         NoCounter{"a&#10;b", "a\\x0Ab"}));

TEST_F(Heartbeat, NeitherIsANumber_BothAreLoggedInOrder) {
  handle("<heartbeatRequest><timer>y</timer><count>x</count></heartbeatRequest>", -7);
  EXPECT_THAT(svc_.calls<UpdateSmaHeartbeatMe>(), ElementsAre(std::tuple(4294967289U, 0U, 0U)));
  ASSERT_EQ(3U, log_.lines().size());
  EXPECT_THAT(log_.lines()[0].text,
              testing::StartsWith("Heartbeat exception caught for slot[-7]: count[x] : "));
  EXPECT_THAT(log_.lines()[1].text,
              testing::StartsWith("Heartbeat exception caught for slot[-7]: timer[y] : "));
}

TEST_F(Heartbeat, LargestNumbers_AreSentAsTheyAre) {
  handle("<heartbeatRequest><count>4294967295</count><timer>4294967295</timer></heartbeatRequest>",
         -1);
  EXPECT_THAT(svc_.calls<UpdateSmaHeartbeatMe>(),
              ElementsAre(std::tuple(4294967295U, 4294967295U, 4294967295U)));
  EXPECT_TRUE(
      log_.contains(1, "Triggering UpdateSmaHeartbeat method for slot : -1, Message ID : id-1"));
}

TEST_F(Heartbeat, CounterTwice_TheLastCounts) {
  handle("<heartbeatRequest><count>1</count><count>2</count><timer>3</timer></heartbeatRequest>");
  EXPECT_THAT(svc_.calls<UpdateSmaHeartbeatMe>(), ElementsAre(std::tuple(3U, 2U, 3U)));
}

}  // namespace
}  // namespace zan_serviceOrchAG
