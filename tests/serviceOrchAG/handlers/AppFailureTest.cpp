#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/support/ExpectedReply.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingSvc.h"

namespace zan_serviceOrchAG {
namespace {

using serviceorchapi::NotifyAppFailureMe;
using test_support::LogCapture;
using test_support::LogLine;
using test_support::RecordingSvc;
using testing::ElementsAre;
using testing::IsEmpty;

class AppFailure : public testing::Test {
 protected:
  std::unique_ptr<Response> handle(const std::string& document, int slot = 3,
                                   const std::string& action = "") {
    log_.clear();
    return std::unique_ptr<Response>(handler_.AG_appFailureReqCb("id-1", action, document, slot));
  }

  static void expectReply(const std::unique_ptr<Response>& response, unsigned code,
                          const std::string& message) {
    test_support::expectReply(response.get(), "appFailureResponse", code, message);
  }

  RecordingSvc svc_;
  LogCapture log_;
  MsgHandler handler_;
};

TEST_F(AppFailure, Instance_ReachesTheEngineWithoutAWait) {
  expectReply(
      handle("<appFailureRequest><appInstanceId>  abc\n</appInstanceId></appFailureRequest>"), 100,
      "OK");
  EXPECT_THAT(svc_.calls<NotifyAppFailureMe>(), ElementsAre(std::tuple(base::String("abc"))));
  ASSERT_EQ(1U, svc_.sent().size());
  EXPECT_FALSE(svc_.sent()[0].responseRequired);
  EXPECT_EQ(4, static_cast<int>(svc_.sent()[0].priority));
  EXPECT_FALSE(svc_.sent()[0].cookie.empty());
  EXPECT_EQ(0U, handler_.knownCookies());
  EXPECT_THAT(
      log_.lines(),
      ElementsAre(LogLine{5, "AG_appFailureReqCb",
                          "Received appFailure request for appInstance slot[3]: abc"},
                  LogLine{1, "AG_appFailureReqCb",
                          "Triggering NotifyAppFailure method for slot : 3, Message ID : id-1"}));
}

TEST_F(AppFailure, Call_IsAnnouncedBeforeItIsMade) {
  std::size_t announced = 0;
  svc_.onSend([&](const RecordingSvc::Sent&) { announced = log_.lines().size(); });
  handle("<appFailureRequest><appInstanceId>1</appInstanceId></appFailureRequest>");
  EXPECT_EQ(2U, announced);
}

TEST_F(AppFailure, EachCall_HasItsOwnCookie) {
  handle("<appFailureRequest><appInstanceId>1</appInstanceId></appFailureRequest>");
  handle("<appFailureRequest><appInstanceId>1</appInstanceId></appFailureRequest>");
  ASSERT_EQ(2U, svc_.sent().size());
  EXPECT_NE(svc_.sent()[0].cookie, svc_.sent()[1].cookie);
}

TEST_F(AppFailure, NoInstance_IsRefusedAndTheEngineIsNotTold) {
  for (const std::string& document :
       {std::string("<appFailureRequest/>"), std::string(), std::string("no document"),
        std::string("<appFailureRequest><appInstanceId>1</appInstanceId>"),
        std::string("<appFailure><appInstanceId>1</appInstanceId></appFailure>"),
        std::string("<appFailureRequest><deep><appInstanceId>1</appInstanceId></deep>"
                    "</appFailureRequest>"),
        std::string("\xff\xfe"), std::string(2 * 1024 * 1024, 'x')}) {
    expectReply(handle(document), 505, "No <appInstanceId> tag found in the appFailure request");
    EXPECT_THAT(log_.lines(),
                ElementsAre(LogLine{6, "errorResponse",
                                    "No <appInstanceId> tag found in the appFailure request"}));
  }
  EXPECT_THAT(svc_.sent(), IsEmpty());
}

struct Identifier {
  const char* sent;
  const char* forwarded;
  const char* logged;
};

class Identifiers : public AppFailure, public testing::WithParamInterface<Identifier> {};

TEST_P(Identifiers, Instance_IsForwardedAsItIs) {
  expectReply(handle(std::string("<appFailureRequest><appInstanceId>") + GetParam().sent +
                     "</appInstanceId></appFailureRequest>"),
              100, "OK");
  EXPECT_THAT(svc_.calls<NotifyAppFailureMe>(),
              ElementsAre(std::tuple(base::String(GetParam().forwarded))));
  EXPECT_TRUE(log_.contains(
      5, std::string("Received appFailure request for appInstance slot[3]: ") + GetParam().logged));
}

INSTANTIATE_TEST_SUITE_P(
    All, Identifiers,
    testing::Values(Identifier{"", "", ""}, Identifier{" \t\n", "", ""},
                    Identifier{"-1", "-1", "-1"},
                    Identifier{"no such instance", "no such instance", "no such instance"},
                    Identifier{"%s%n", "%s%n", "%s%n"}, Identifier{"a&#10;b", "a\nb", "a\\x0Ab"},
                    Identifier{"&lt;a&gt;", "<a>", "<a>"}));

TEST_F(AppFailure, InstanceTwice_TheLastCounts) {
  handle(
      "<appFailureRequest><appInstanceId>1</appInstanceId><appInstanceId>2</appInstanceId>"
      "</appFailureRequest>");
  EXPECT_THAT(svc_.calls<NotifyAppFailureMe>(), ElementsAre(std::tuple(base::String("2"))));
}

TEST_F(AppFailure, SlotAndAction_AreNotChecked) {
  expectReply(handle("<appFailureRequest><appInstanceId>1</appInstanceId></appFailureRequest>", -7,
                     "update"),
              100, "OK");
  EXPECT_TRUE(log_.contains(5, "Received appFailure request for appInstance slot[-7]: 1"));
  EXPECT_TRUE(
      log_.contains(1, "Triggering NotifyAppFailure method for slot : -7, Message ID : id-1"));
}

TEST_F(AppFailure, EngineRejectsTheReport_TheBladeIsToldOkAndNobodyWaits) {
  svc_.onSend([](const RecordingSvc::Sent& call) {
    NotifyAppFailureMe me;
    me.setCookie(call.cookie);
    Svc::failedRspServiceorchapiNotifyAppFailureCb(me, 7, "no such instance");
  });
  expectReply(handle("<appFailureRequest><appInstanceId>1</appInstanceId></appFailureRequest>"),
              100, "OK");
}

TEST_F(AppFailure, CallFails_ItPassesThrough) {
  svc_.onSend([](const RecordingSvc::Sent&) { throw std::runtime_error("no memory"); });
  EXPECT_THROW(handle("<appFailureRequest><appInstanceId>1</appInstanceId></appFailureRequest>"),
               std::runtime_error);
}

}  // namespace
}  // namespace zan_serviceOrchAG
