#include "serviceOrchAG/server/MsgHandler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/support/Configured.h"
#include "tests/support/ExpectedReply.h"
#include "tests/support/InstalledMsgHandler.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingSvc.h"
#include "tests/support/RegistryCleaner.h"
#include "tests/support/ReplyDocument.h"
#include "tests/support/ScriptedChannel.h"

namespace zan_serviceOrchAG {
namespace {

using serviceorchapi::UpdatePlatformInfoMe;
using serviceorchapi::UpdateSmaHeartbeatMe;
using test_support::Configured;
using test_support::InstalledMsgHandler;
using test_support::LogCapture;
using test_support::LogLine;
using test_support::RecordingSvc;
using test_support::RegistryCleaner;
using test_support::ReplyDocument;
using test_support::ScriptedChannel;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kHeartbeat =
    "<heartbeatRequest><count>7</count><timer>30</timer></heartbeatRequest>";

std::string progressOf(const std::string& operCmd) {
  return "<commandProgressUpdateRequest><operCmd>" + operCmd +
         "</operCmd></commandProgressUpdateRequest>";
}

class Dispatch : public testing::Test {
 protected:
  Dispatch() { handler_.registerCommands(); }

  std::unique_ptr<Response> handle(const std::string& command, const std::string& action = "",
                                   const std::string& document = kHeartbeat,
                                   const std::string& identity = "sma_slot3") {
    log_.clear();
    return std::unique_ptr<Response>(
        handler_.handleCb(command, action, "id-1", document, identity));
  }

  static void expectReply(const std::unique_ptr<Response>& response, unsigned code,
                          const std::string& root, const std::string& message) {
    test_support::expectReply(response.get(), root, code, message);
  }

  ScriptedChannel channels_;
  RecordingSvc svc_;
  LogCapture log_;
  MsgHandler handler_;
  const RegistryCleaner cleaner_;
};

TEST_F(Dispatch, RegisteredAndValid_ReachesItsHandler) {
  createSMAClient("3", "h", "1", true);
  expectReply(handle("heartbeat"), 100, "heartbeatResponse", "OK");
  EXPECT_THAT(svc_.calls<UpdateSmaHeartbeatMe>(), ElementsAre(std::tuple(3U, 7U, 30U)));
  EXPECT_EQ((LogLine{4, "handleCb",
                     "Handling SMA request cmd : heartbeat, action :  , key : heartbeat, message "
                     "ID : id-1, client identity : sma_slot3, Message : " +
                         kHeartbeat + " "}),
            log_.lines().front());
}

TEST_F(Dispatch, UnknownCommandOfAnUnregisteredSlot_IsAnsweredInvalidCommand) {
  expectReply(handle("reboot", "", "<x/>"), 500, "rebootResponse", "Invalid Command");
  EXPECT_THAT(
      log_.lines(),
      ElementsAre(LogLine{4, "handleCb",
                          "Handling SMA request cmd : reboot, action :  , key : reboot, message ID "
                          ": id-1, client identity : sma_slot3, Message : <x/> "},
                  LogLine{6, "handleCb",
                          "Received unknown cmd : reboot , message ID : id-1 , client identity : "
                          "sma_slot3, Message : <x/> "}));
}

TEST_F(Dispatch, UnknownAction_IsLoggedWithCommandActionAndKey) {
  expectReply(handle("heartbeat", "get", "<x/>"), 500, "heartbeatResponse", "Invalid Command");
  EXPECT_THAT(log_.lines(),
              ElementsAre(LogLine{4, "handleCb",
                                  "Handling SMA request cmd : heartbeat, action :  get, key : "
                                  "heartbeat.get, message ID : id-1, client identity : sma_slot3, "
                                  "Message : <x/> "},
                          LogLine{6, "handleCb",
                                  "Received unknown cmd : heartbeat , message ID : id-1 , client "
                                  "identity : sma_slot3, Message : <x/> "}));
}

struct UnknownKey {
  const char* command;
  const char* action;
  const char* root;
};

class UnknownKeys : public Dispatch, public testing::WithParamInterface<UnknownKey> {};

TEST_P(UnknownKeys, OfAValidBlade_AreInvalidCommands) {
  createSMAClient("3", "h", "1", true);
  expectReply(handle(GetParam().command, GetParam().action), 500, GetParam().root,
              "Invalid Command");
  EXPECT_THAT(svc_.sent(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    All, UnknownKeys,
    testing::Values(UnknownKey{"commandProgress", "", "commandProgressResponse"},
                    UnknownKey{"heartbeat", "get", "heartbeatResponse"},
                    UnknownKey{"platformInfo", "get", "platformInfoResponse"},
                    UnknownKey{"Heartbeat", "", "HeartbeatResponse"},
                    UnknownKey{"register", "update", "registerResponse"},
                    UnknownKey{"", "", "Response"}, UnknownKey{"", "update", "Response"}));

struct Route {
  const char* command;
  const char* action;
  const char* root;
};

class Routes : public Dispatch, public testing::WithParamInterface<Route> {};

TEST_P(Routes, Request_ReachesItsHandler) {
  createSMAClient("3", "h", "1", true);
  const std::unique_ptr<Response> response = handle(GetParam().command, GetParam().action);
  ASSERT_NE(nullptr, response);
  EXPECT_EQ(505U, response->status);
  EXPECT_EQ(GetParam().root, ReplyDocument::parse(response->body).root);
}

INSTANTIATE_TEST_SUITE_P(All, Routes,
                         testing::Values(Route{"register", "", "registerResponse"},
                                         Route{"commandProgress", "update",
                                               "commandProgressUpdateResponse"},
                                         Route{"appFailure", "", "appFailureResponse"}));

TEST_F(Dispatch, PlatformReport_ReachesItsHandler) {
  const InstalledMsgHandler installed(handler_);
  createSMAClient("3", "h", "1", true);
  svc_.onSend([](const RecordingSvc::Sent& call) {
    UpdatePlatformInfoMe me;
    me.setCookie(call.cookie);
    Svc::failedRspServiceorchapiUpdatePlatformInfoCb(me, 7, "no such slot");
  });
  expectReply(handle("platformInfo", "update", "<x/>"), 508, "platformInfoUpdateResponse",
              "Failed to update PlatformInfo in DME.");
}

TEST_F(Dispatch, CommandThatMakesNoElementName_IsAnsweredWithAnEmptyBody) {
  const auto response = handle("<evil/>");
  ASSERT_NE(nullptr, response);
  EXPECT_EQ(500U, response->status);
  EXPECT_EQ("", response->body);
}

TEST_F(Dispatch, UnregisteredSlot_IsRefused) {
  expectReply(handle("heartbeat"), 510, "heartbeatResponse", "SMA is not register with slot 3");
  EXPECT_EQ(2U, log_.lines().size());
  EXPECT_EQ((LogLine{4, "handleCb",
                     "SMA is not register for slot : 3, cmd : heartbeat, action : , key : "
                     "heartbeat, message ID : id-1, client identity : sma_slot3"}),
            log_.lines().back());
  EXPECT_THAT(svc_.sent(), IsEmpty());
}

TEST_F(Dispatch, BladeNotValid_IsRefused) {
  createSMAClient("3", "h", "1", false);
  expectReply(handle("platformInfo", "update", "<x/>"), 511, "platformInfoResponse",
              "Blade is not in valid state for slot 3");
  EXPECT_EQ((LogLine{4, "handleCb",
                     "Blade is not in valid state for slot : 3, cmd : platformInfo, action : "
                     "update, key : platformInfo.update, message ID : id-1, client identity : "
                     "sma_slot3"}),
            log_.lines().back());
}

TEST_F(Dispatch, OtherSlotIsRegistered_ThisOneIsRefused) {
  createSMAClient("4", "h", "1", true);
  expectReply(handle("heartbeat"), 510, "heartbeatResponse", "SMA is not register with slot 3");
}

TEST_F(Dispatch, SlotRegisteredWithALeadingZero_IsAnotherSlot) {
  createSMAClient("03", "h", "1", true);
  expectReply(handle("heartbeat", "", kHeartbeat, "sma_slot03"), 510, "heartbeatResponse",
              "SMA is not register with slot 3");
}

TEST_F(Dispatch, NegativeSlot_IsASlotLikeAnyOther) {
  expectReply(handle("heartbeat", "", kHeartbeat, "sma_slot-1"), 510, "heartbeatResponse",
              "SMA is not register with slot -1");
  createSMAClient("-1", "h", "1", true);
  expectReply(handle("heartbeat", "", kHeartbeat, "sma_slot-1"), 100, "heartbeatResponse", "OK");
  EXPECT_THAT(svc_.calls<UpdateSmaHeartbeatMe>(), ElementsAre(std::tuple(4294967295U, 7U, 30U)));
}

TEST_F(Dispatch, RegisterFromAnUnregisteredSlot_ReachesItsHandler) {
  expectReply(handle("register", "", "<registerRequest/>"), 505, "registerResponse",
              "No <bladeSlotId> tag found in the register request");
}

TEST_F(Dispatch, RegisterFromABladeNotValid_ReachesItsHandler) {
  createSMAClient("3", "h", "1", false);
  expectReply(handle("register", "", "<registerRequest/>"), 505, "registerResponse",
              "No <bladeSlotId> tag found in the register request");
}

TEST_F(Dispatch, OtherProgressFromAnUnregisteredSlot_IsRefused) {
  expectReply(handle("commandProgress", "update", progressOf("installApp")), 510,
              "commandProgressResponse", "SMA is not register with slot 3");
  expectReply(handle("commandProgress", "update", progressOf(" formatDisk ")), 510,
              "commandProgressResponse", "SMA is not register with slot 3");
  expectReply(handle("commandProgress", "update", "no document"), 510, "commandProgressResponse",
              "SMA is not register with slot 3");
}

/// What the gates of a request from an unregistered slot say, by the log.
bool isRefused(const LogCapture& log) {
  for (const LogLine& line : log.lines()) {
    if (line.text.starts_with("SMA is not register for slot : ")) {
      return true;
    }
  }
  return false;
}

TEST_F(Dispatch, DiskFormatProgressFromAnUnregisteredSlot_PassesTheGates) {
  handle("commandProgress", "update", progressOf("app.formatDisk"));
  EXPECT_FALSE(isRefused(log_));
  handle("commandProgress", "update", progressOf("formatDisk"));
  EXPECT_FALSE(isRefused(log_));
}

// What the gates look at is the command only, not what the report is about.
TEST_F(Dispatch, DiskFormatProgressOfAnInstanceFromAnUnregisteredSlot_ReachesTheEngine) {
  const auto response =
      handle("commandProgress", "update",
             "<commandProgressUpdateRequest><appInstanceId>17</appInstanceId>"
             "<operCmd>app.formatDisk</operCmd><operProgress>50</operProgress>"
             "<operStatus>running</operStatus><code>102</code><ack>true</ack><errorDesc/>"
             "</commandProgressUpdateRequest>");
  expectReply(response, 100, "commandProgressUpdateResponse", "OK");
  EXPECT_THAT(svc_.calls<serviceorchapi::UpdateProgressMe>(),
              ElementsAre(std::tuple("17", 6, 50U, 1, 102U, "")));
}

TEST_F(Dispatch, IdentityThatNamesNoSlot_Throws) {
  EXPECT_THROW(handle("heartbeat", "", kHeartbeat, "blade1"), std::invalid_argument);
  EXPECT_THROW(handle("reboot", "", kHeartbeat, "blade1"), std::invalid_argument)
      << "the identity is looked at before the command";
  EXPECT_THROW(handle("register", "", kHeartbeat, "sma_slot0"), std::invalid_argument);
}

TEST_F(Dispatch, HandlerThrows_ItPassesThrough) {
  createSMAClient("3", "h", "1", true);
  svc_.onSend([](const RecordingSvc::Sent&) { throw std::runtime_error("no memory"); });
  EXPECT_THROW(handle("heartbeat"), std::runtime_error);
}

TEST_F(Dispatch, FormatSpecifiers_AreTextOnly) {
  handle("%s%n", "%d", "%100000c", "sma_slot3");
  EXPECT_TRUE(log_.contains(6,
                            "Received unknown cmd : %s%n , message ID : id-1 , client identity : "
                            "sma_slot3, Message : %100000c "));
}

TEST_F(Dispatch, DeRegister_RemovesTheSlot) {
  createSMAClient("3", "h", "1", true);
  createSMAClient("4294967295", "h", "1", true);
  handler_.AG_deRegisterSlotId(3);
  EXPECT_FALSE(is_bladeRegistered("3"));
  handler_.AG_deRegisterSlotId(3);
  handler_.AG_deRegisterSlotId(4294967295U);
  EXPECT_THAT(ClientMap, IsEmpty());
}

TEST_F(Dispatch, ServiceResponseCallback_DoesNothing) {
  handler_.AG_handleServiceOrchapiRespCb(base::Buffer(), nullptr, true);
  EXPECT_EQ(0U, handler_.knownCookies());
}

TEST_F(Dispatch, ManyThreads_AreServedAtOnce) {
  createSMAClient("3", "h", "1", true);
  std::vector<std::thread> workers;
  for (int worker = 0; worker < 5; ++worker) {
    workers.emplace_back([this] {
      for (int request = 0; request < 100; ++request) {
        const std::unique_ptr<Response> response(
            handler_.handleCb("heartbeat", "", "id", kHeartbeat, "sma_slot3"));
        EXPECT_EQ(100U, response->status);
      }
    });
  }
  for (std::thread& worker : workers) {
    worker.join();
  }
  EXPECT_EQ(500U, svc_.sent().size());
}

TEST(MsgHandlerInstance, ManyFirstCalls_MakeOneObject) {
  MsgHandler* const before = MsgHandler::instance.exchange(nullptr);
  std::vector<MsgHandler*> seen(8);
  std::vector<std::thread> callers;
  for (MsgHandler*& result : seen) {
    callers.emplace_back([&result] { result = MsgHandler::getInstance(); });
  }
  for (std::thread& caller : callers) {
    caller.join();
  }
  EXPECT_NE(nullptr, seen.front());
  EXPECT_THAT(seen, testing::Each(seen.front()));
  EXPECT_EQ(seen.front(), MsgHandler::getInstance());
  delete MsgHandler::instance.exchange(before);
}

class MsgHandlerInit : public testing::Test {
 protected:
  /// The workers of a handler never end, so it stays until the process does.
  static MsgHandler& start() {
    static auto& started = *new std::vector<std::unique_ptr<MsgHandler>>;
    started.push_back(std::make_unique<MsgHandler>());
    started.back()->init();
    return *started.back();
  }

  ScriptedChannel channels_;
  LogCapture log_;
};

TEST_F(MsgHandlerInit, FiveWorkers_ServeAtTheLeftEndPoint) {
  const Configured self({"supervisor.self_id=1"});
  const MsgHandler& handler = start();
  ASSERT_TRUE(channels_.waitForIdleWorkers(5));
  EXPECT_THAT(handler.taskIds(), ElementsAre(1, 2, 3, 4, 5));
  EXPECT_EQ(5U, channels_.alive());
  EXPECT_TRUE(log_.contains(5, "serviceAG MsgHandler callbacks registered"));
  for (int number = 0; number < 5; ++number) {
    EXPECT_EQ(1U, log_.count(5, "Init LEFT WorkerTask " + std::to_string(number)));
    EXPECT_EQ(1U, log_.count(5, "Starting worker " + std::to_string(number)));
  }
  const std::vector<std::string> events = channels_.events();
  EXPECT_EQ(5, std::count(events.begin(), events.end(), "server tcp://127.0.0.1:5557"));
}

TEST_F(MsgHandlerInit, OtherSupervisor_ServesAtTheRightEndPoint) {
  const Configured self({"supervisor.self_id=2"});
  start();
  ASSERT_TRUE(channels_.waitForIdleWorkers(5));
  EXPECT_EQ(1U, log_.count(5, "Init RIGHT WorkerTask 4"));
  const std::vector<std::string> events = channels_.events();
  EXPECT_EQ(5, std::count(events.begin(), events.end(), "server tcp://127.0.0.1:6557"));
}

}  // namespace
}  // namespace zan_serviceOrchAG
