#include <chrono>
#include <iterator>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "framework/proc/StateRequest.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/serviceOrchAG/LogLines.h"
#include "tests/support/Configured.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RunningWorker.h"

// The lines of start-up, of the workers and of dispatch.

namespace zan_serviceOrchAG {
namespace {

using test_support::Configured;
using test_support::ManualClock;
using test_support::RunningWorker;
using test_support::ScriptedChannel;
using test_support::throws;

// ----- Start-up ---------------------------------------------------------------------------------

void startUp() {
  const ScriptedChannel channels;
  const Configured configured({"supervisor.self_id=1"});
  Svc::init(0, nullptr);
  ASSERT_TRUE(channels.waitForIdleWorkers(5));
}

void mainOfAProcessWhoseChannelsAreUp() {
  proc::StateRequest::get().reset();
  proc::StateRequest::get().processStateResponse(1, 1, 1);
  Svc::mainCb();
}

constexpr LogRow kStartUp[] = {
    {"initCb", 5, startUp, "serviceAG Starting TzTimer..."},
    {"initCb", 5, startUp, "serviceAG Timer started. Initializing MsgHandler..."},
    {"initCb", 5, startUp, "serviceAG MsgHandler initialized."},
    {"mainCb", 5, mainOfAProcessWhoseChannelsAreUp, "Waiting for channel init..."},
    {"mainCb", 5, mainOfAProcessWhoseChannelsAreUp, ".... Channel initialized. "},
};
static_assert(std::size(kStartUp) == 5, "a row for each line of svc/StartUp.cpp");
INSTANTIATE_TEST_SUITE_P(StartUp, LogLines, testing::ValuesIn(kStartUp));

// ----- Workers ----------------------------------------------------------------------------------

/// Lets one worker take everything that is scripted and come back for more.
void serve(TestGateway& gateway) {
  const RunningWorker worker(gateway.channels, 0, true);
  ASSERT_TRUE(gateway.channels.waitForIdleWorkers(1));
}

void serve(ScriptedChannel::Parts request) {
  TestGateway gateway;
  gateway.channels.onReceive(std::move(request));
  serve(gateway);
}

void endPointInUse() {
  TestGateway gateway;
  ManualClock clock;
  gateway.channels.onServerEndPoint(throws(std::runtime_error("Address already in use")));
  const RunningWorker worker(gateway.channels, 2, false);
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::seconds(1)));
  clock.advance(std::chrono::seconds(1));
  ASSERT_TRUE(gateway.channels.waitForIdleWorkers(1));
}

void fourParts() {
  serve({"serviceOrchAG.heartbeat", "nox-xml:1", "id-1", "sma_slot3"});
}

void foreignSubject() {
  serve({"otherService.heartbeat", "nox-xml:1", "id-1", "sma_slot3", "<x/>"});
}

void subjectWithoutACommand() {
  serve({"serviceOrchAG", "nox-xml:1", "id-1", "sma_slot3", "<x/>"});
}

void unknownAction() {
  serve({"serviceOrchAG.heartbeat.get", "nox-xml:1", "id-1", "sma_slot3", "<x/>"});
}

void sendFails() {
  TestGateway gateway;
  gateway.channels.onReceive({"serviceOrchAG.heartbeat", "nox-xml:1", "id-1", "sma_slot3", "<x/>"});
  gateway.channels.onSend([](const msglyr::Message&) { return -1; });
  serve(gateway);
}

void requestsThatThrow() {
  TestGateway gateway;
  gateway.channels.onReceive(throws(std::bad_alloc()));
  gateway.channels.onReceive(throws(std::string("text")));
  gateway.channels.onReceive(throws(std::runtime_error("broken")));
  gateway.channels.onReceive(throws(7));
  serve(gateway);
}

constexpr LogRow kWorker[] = {
    {"WorkerTask", 5, startUp, "Init LEFT WorkerTask 4"},
    {"WorkerTask", 5, endPointInUse, "Init RIGHT WorkerTask 2"},
    {"run", 5, endPointInUse, "Starting worker 2", 2},
    {"run", 8, endPointInUse,
     "run : An exception occurred while setting up server or worker end point: Address already in "
     "use"},
    {"run", 1, unknownAction, "Worker 0 waiting to receive message from SMA.", 2},
    {"run", 6, fourParts, "Received 4 message parts (should be 5)"},
    {"run", 6, foreignSubject, "My identity passed was otherService, should be serviceOrchAG"},
    {"run", 6, subjectWithoutACommand, "The subject serviceOrchAG names no command"},
    {"run", 1, unknownAction,
     "Calling handleCb with identity: serviceOrchAG, cmd: heartbeat, action: get, Message Id: "
     "id-1, client identity: sma_slot3"},
    {"run", 1, unknownAction,
     "Built serviceAG reply for SMA request with subject : sma_slot3.heartbeat.get, Command : "
     "sma_slot3.heartbeat.get, Content-type : nox-xml:1, Status Code : 500, Message ID : id-1,  "
     "Message : <heartbeatResponse><response><code>500</code><message>Invalid "
     "Command</message></response></heartbeatResponse> "},
    {"run", 1, unknownAction,
     "Reply sent from serviceAG to SMA with subject : sma_slot3.heartbeat.get, Message ID : id-1"},
    {"run", 6, sendFails, "messaging layer send() failed, rc = -1, Message Id = id-1"},
    {"run", 8, requestsThatThrow, "run : caught baddalloc std::bad_alloc"},
    {"run", 8, requestsThatThrow, "run : caught string exception: text"},
    {"run", 8, requestsThatThrow, "run : caught standard exception: broken"},
    {"run", 8, requestsThatThrow, "run : caught unknown exception"},
};
static_assert(std::size(kWorker) == 15 + 1,
              "a row for each line of server/WorkerTask.cpp, one of them for both sides");
INSTANTIATE_TEST_SUITE_P(Worker, LogLines, testing::ValuesIn(kWorker));

// ----- Dispatch ---------------------------------------------------------------------------------

void requestOfAnUnregisteredBlade() {
  serve({"serviceOrchAG.platformInfo.update", "nox-xml:1", "id-1", "sma_slot3", "<x/>"});
}

void requestOfAnInvalidBlade() {
  TestGateway gateway;
  createSMAClient("3", "10.0.0.3", "5560", false);
  gateway.channels.onReceive(
      {"serviceOrchAG.platformInfo.update", "nox-xml:1", "id-1", "sma_slot3", "<x/>"});
  serve(gateway);
}

constexpr LogRow kDispatch[] = {
    {"init", 5, startUp, "serviceAG MsgHandler callbacks registered"},
    {"handleCb", 4, unknownAction,
     "Handling SMA request cmd : heartbeat, action :  get, key : heartbeat.get, message ID : id-1, "
     "client identity : sma_slot3, Message : <x/> "},
    {"handleCb", 6, unknownAction,
     "Received unknown cmd : heartbeat , message ID : id-1 , client identity : sma_slot3, Message "
     ": <x/> "},
    {"handleCb", 4, requestOfAnUnregisteredBlade,
     "SMA is not register for slot : 3, cmd : platformInfo, action : update, key : "
     "platformInfo.update, message ID : id-1, client identity : sma_slot3"},
    {"handleCb", 4, requestOfAnInvalidBlade,
     "Blade is not in valid state for slot : 3, cmd : platformInfo, action : update, key : "
     "platformInfo.update, message ID : id-1, client identity : sma_slot3"},
};
static_assert(std::size(kDispatch) == 5, "a row for each line of server/MsgHandler.cpp");
INSTANTIATE_TEST_SUITE_P(Dispatch, LogLines, testing::ValuesIn(kDispatch));

// ----- Replies ----------------------------------------------------------------------------------

void wrongContentType() {
  serve({"serviceOrchAG.heartbeat", "nox-xml:2", "id-1", "sma_slot3", "<x/>"});
}

void registerWithoutASlot() {
  serve({"serviceOrchAG.register", "nox-xml:1", "id-1", "sma_slot3", "<registerRequest/>"});
}

void missingValue() {
  Response response;
  MsgHandler::missingValueResponse("port", "register", &response);
}

void invalidParameter() {
  TestGateway gateway;
  createSMAClient("3", "10.0.0.3", "5560", true);
  const char* const document =
      "<commandProgressUpdateRequest><appInstanceId>17</appInstanceId>"
      "<operCmd>x.y.installApp</operCmd></commandProgressUpdateRequest>";
  gateway.channels.onReceive(
      {"serviceOrchAG.commandProgress.update", "nox-xml:1", "id-1", "sma_slot3", document});
  serve(gateway);
}

/// Dispatch lets no other action through.
void invalidAction() {
  TestGateway gateway;
  const std::unique_ptr<Response> response(
      gateway.handler.AG_platformInfoUpdateReqCb("id-1", "get", "<x/>", 3));
}

void heartbeatWithoutACount() {
  TestGateway gateway;
  createSMAClient("3", "10.0.0.3", "5560", true);
  gateway.channels.onReceive({"serviceOrchAG.heartbeat", "nox-xml:1", "id-1", "sma_slot3",
                              "<heartbeatRequest><timer>1</timer></heartbeatRequest>"});
  serve(gateway);
}

void reportWithTwoLoads() {
  TestGateway gateway;
  createSMAClient("3", "10.0.0.3", "5560", true);
  // Nobody would answer the report.
  gateway.service.onSend([](const test_support::RecordingSvc::Sent&) { throw 7; });
  gateway.channels.onReceive(
      {"serviceOrchAG.platformInfo.update", "nox-xml:1", "id-1", "sma_slot3",
       "<platformInfoUpdateRequest><Cpu/><Cpu/></platformInfoUpdateRequest>"});
  serve(gateway);
}

constexpr LogRow kReplies[] = {
    {"errorResponse", 6, wrongContentType, "Only content-type:version \"nox-xml:1\" is supported"},
    {"errorResponse", 6, registerWithoutASlot,
     "No <bladeSlotId> tag found in the register request"},
    {"errorResponse", 6, missingValue, "No port value found in the register response"},
    {"errorResponse", 6, invalidParameter,
     "Invalid value \"y.installApp\" found for <operCmd> in the commandProgressUpdate request"},
    {"errorResponse", 6, invalidAction,
     "Received platformInfoUpdate request with invalid action \"get\""},
    {"missingTagError", 5, heartbeatWithoutACount, "No <count> tag found in the heartbeat request"},
    {"extraTagError", 8, reportWithTwoLoads,
     "More <Cpu> tag found in the platformInfoUpdate request"},
};
static_assert(std::size(kReplies) == 5 + 2,
              "a row for each text of an error reply, and for both lines without a reply");
INSTANTIATE_TEST_SUITE_P(Replies, LogLines, testing::ValuesIn(kReplies));

}  // namespace
}  // namespace zan_serviceOrchAG
