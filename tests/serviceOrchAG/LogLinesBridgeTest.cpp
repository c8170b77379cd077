#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>

#include "framework/base/Buffer.h"
#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/bridge/PendingMap.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/bridge/ResponseSync.h"
#include "serviceOrchAG/bridge/SMAClient.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/serviceOrchAG/LogLines.h"

// The lines of the registry, of the blades' clients, of the engine's answers and of what the engine
// has done here.

namespace zan_serviceOrchAG {
namespace {

using test_support::ScriptedChannel;
using test_support::throws;

// ----- Registry ---------------------------------------------------------------------------------

void registerTwice() {
  const TestGateway gateway;
  createSMAClient("3", "10.0.0.3", "5560", true);
  createSMAClient("3", "10.9.9.9", "1", false);
}

void endlessAddress() {
  const TestGateway gateway;
  createSMAClient("3", std::string(256, '1'), "5560", true);
}

constexpr LogRow kRegistry[] = {
    {"createSMAClient", 5, registerTwice, "Registered SMAClient for slot 3 at 10.0.0.3:5560"},
    {"createSMAClient", 1, registerTwice, "SMAClient is already register for slot 3"},
    {"createSMAClient", 6, endlessAddress,
     "No SMAClient is made: slot, address or port has more than 255 bytes, or there are 1024 names "
     "already that no slot has"},
};
static_assert(std::size(kRegistry) == 3, "a row for each line of bridge/ClientMap.cpp");
INSTANTIATE_TEST_SUITE_P(Registry, LogLines, testing::ValuesIn(kRegistry));

// ----- Clients ----------------------------------------------------------------------------------

void twoRegistrationsAtOnce() {
  const TestGateway gateway;
  createSMAClient("3", "10.0.0.3", "5560", true);
  std::string slot = "3";
  std::string ip = "10.9.9.9";
  new SMAClient(slot, ip, 7, true);  // the registry has it, and deletes it
}

void unknownSlot() {
  sendMsg("3", "<stop/>", "stopApp");
}

void invalidBlade() {
  const TestGateway gateway;
  createSMAClient("3", "10.0.0.3", "5560", false);
  sendMsg("3", "<stop/>", "stopApp");
}

/// A command to a valid blade; `answer` is what its channel does.
template <class Answer>
void command(TestGateway& gateway, Answer answer) {
  createSMAClient("3", "10.0.0.3", "5560", true);
  gateway.channels.onReceive(std::move(answer));
  sendMsg("3", "<stop/>", "stopApp");
}

template <class Answer>
void command(Answer answer) {
  TestGateway gateway;
  command(gateway, std::move(answer));
}

void answered() {
  command(ScriptedChannel::Parts{"serviceOrchAG.stopApp", "nox-xml:1", "1", "100", "<done/>"});
}

void notAnswered() {
  command(0);
}

void answeredInThreeParts() {
  command(ScriptedChannel::Parts{"serviceOrchAG.stopApp", "nox-xml:1", "1"});
}

void channelThrows() {
  command(throws(std::runtime_error("broken pipe")));
}

void channelThrowsAText() {
  command(throws(std::string("text")));
}

void channelThrowsANumber() {
  command(throws(7));
}

/// No answer, and then no fresh channel.
template <class Failure>
void commandWithoutAReset(TestGateway& gateway, Failure failure) {
  command(gateway, [&gateway, failure](msglyr::Message&) {
    gateway.channels.onServerEndPoint(failure);
    return 0;
  });
}

void resetThrows() {
  TestGateway gateway;
  commandWithoutAReset(gateway, throws(std::runtime_error("no descriptors")));
}

void resetThrowsANumber() {
  TestGateway gateway;
  commandWithoutAReset(gateway, throws(7));
}

void commandWithoutAChannel() {
  TestGateway gateway;
  commandWithoutAReset(gateway, throws(std::runtime_error("no descriptors")));
  sendMsg("3", "<start/>", "startApp");
}

void endPointWithoutAChannel() {
  TestGateway gateway;
  commandWithoutAReset(gateway, throws(std::runtime_error("no descriptors")));
  std::string slot = "3";
  std::string ip = "10.0.0.3";
  ClientMap.at("3")->setClientChannel(slot, ip, 1);
}

// ~SMAClient can say "%s : *** Error: during acquiring lock failed: %s", at level 8. That has no
// row: what stands between its other lines is an erasure by key, the end of a channel and the
// logger, and none of them throws.
constexpr LogRow kClient[] = {
    {"SMAClient", 5, twoRegistrationsAtOnce, "Deleted SMAClient from map for slot 3"},
    {"SMAClient", 1, answered, "Adding SMAClient in map for slot 3"},
    {"~SMAClient", 1, answered, "deleting smaClient... for slot 3"},
    {"~SMAClient", 5, answered, "deleting channel for slot 3"},
    {"~SMAClient", 5, answered, "deleting registered slot 3 entry from map"},
    {"setClientChannel", 8, endPointWithoutAChannel, "SMAClient:: 3 sma_dealer_client is null"},
    {"sendMsg", 6, unknownSlot, "stopApp : SMA is not registered for slot 3"},
    {"sendMsg", 6, invalidBlade,
     "stopApp : Blade is not in valid state for slot 3. Please format the blade."},
    {"sendMsg", 1, answered, "stopApp:: Retrieved slotId: 3 "},
    {"send", 1, answered,
     "Built serviceAG request subject = sma_slot3.stopApp, Command = sma_slot3.stopApp, "
     "Content-type = nox-xml:1, Client Identity = serviceOrchAG, Message ID = 1, Message = "
     "<stop/> "},
    {"send", 5, answered,
     "Sending servicveAG request Message Id[1], Message[<stop/>] to server at "
     "tcp://10.0.0.3:5560"},
    {"send", 5, answered,
     "100 : SMA response [ Message : <done/>] received by serviceAG for request [ Message Id = 1, "
     "subject = sma_slot3.stopApp, message = <stop/> ]"},
    {"send", 6, commandWithoutAChannel,
     "576 : SMAClient channel is not initialized for Message Id[2], subject[sma_slot3.startApp], "
     "message[<start/>] "},
    {"send", 8, channelThrows, "send::send() caught std exception: broken pipe"},
    {"send", 8, channelThrowsAText, "send::send() caught string exception: text"},
    {"send", 8, channelThrowsANumber, "send::send() caught an unknown exception"},
    {"send", 8, channelThrows,
     "577 : REQ/REP between ServiceAG and SMA failed for Message Id[1], "
     "subject[sma_slot3.stopApp], message[<stop/>], error[broken pipe]"},
    {"send", 8, channelThrowsANumber,
     "577 : REQ/REP between ServiceAG and SMA failed for Message Id[1], "
     "subject[sma_slot3.stopApp], message[<stop/>], error[caught an unknown exception]"},
    {"send", 6, notAnswered,
     "578 : serviceAG received timeout or zero response part from SMA for Message Id[1], "
     "subject[sma_slot3.stopApp], message[<stop/>]"},
    {"send", 6, answeredInThreeParts,
     "579 : No response received or missing message part from SMA for Message Id[1], "
     "subject[sma_slot3.stopApp], message[<stop/>]"},
    {"resetClientChannel", 1, notAnswered, "resetting smaClient channel... for slot 3"},
    {"setClientChannel", 1, notAnswered, "Set server end point for slot 3 : tcp://10.0.0.3:5560",
     2},
    {"resetClientChannel", 1, notAnswered,
     "SMAClient::resetClientChannel() for slot 3 end point: 10.0.0.3:5560"},
    {"sendMsg", 8, resetThrows, "Resetting the channel of slot 3 failed: no descriptors"},
    {"sendMsg", 8, resetThrowsANumber, "Resetting the channel of slot 3 failed"},
};
static_assert(std::size(kClient) == 23 + 2,
              "a row for each line of bridge/SMAClient.cpp but the one above; two for the line of "
              "577, by what was thrown, and for the line of 578 and 579");
INSTANTIATE_TEST_SUITE_P(Client, LogLines, testing::ValuesIn(kClient));

// ----- Answers of the engine --------------------------------------------------------------------

void answers() {
  const TestGateway gateway;
  serviceorchapi::ValidateBladeStateMe validate;
  serviceorchapi::UpdatePlatformInfoMe update;
  Svc::successRspServiceorchapiValidateBladeStateCb(validate, "token", true, false);
  Svc::failedRspServiceorchapiValidateBladeStateCb(validate, 7, "no such slot");
  Svc::successRspServiceorchapiUpdatePlatformInfoCb(update);
  Svc::failedRspServiceorchapiUpdatePlatformInfoCb(update, 7, "no such slot");
}

void answerThatNamesAnImage() {
  TestGateway gateway;
  const base::Buffer cookie("cookie", 6);
  Response response;
  ResponseSync waiter(&response);
  waiter.cookie = cookie;
  const PendingResponse pending(gateway.handler, waiter);
  serverapi::OsControllerVersionMe image;
  image.setCookie(cookie);
  Svc::successRspServerapiOsControllerVersionCb(image, "/images/p.bin", "0xAB", 4096);
}

constexpr LogRow kEngineAnswers[] = {
    {"successRspServiceorchapiValidateBladeStateCb", 1, answers,
     "successRspServiceorchapiValidateBladeStateCb"},
    // The name of another callback, by which readers of the log know the line.
    {"failedRspServiceorchapiValidateBladeStateCb", 1, answers,
     "failedRspAppapiGetInterfaceMappingCb"},
    {"successRspServiceorchapiUpdatePlatformInfoCb", 1, answers,
     "successRspServiceorchapiUpdatePlatformInfoCb"},
    {"failedRspServiceorchapiUpdatePlatformInfoCb", 1, answers,
     "failedRspServiceorchapiUpdatePlatformInfoCb"},
    {"successRspServerapiOsControllerVersionCb", 1, answerThatNamesAnImage,
     "successRspServerapiOsControllerVersionCb"},
    {"successRspServerapiOsControllerVersionCb", 1, answerThatNamesAnImage,
     "imagePath = /images/p.bin, checkSum = 0xAB , imageSize = 4096"},
};
static_assert(std::size(kEngineAnswers) == 5 + 1,
              "a row for each callback of bridge/DmeResponses.cpp that logs its name, and one for "
              "the image");
INSTANTIATE_TEST_SUITE_P(EngineAnswers, LogLines, testing::ValuesIn(kEngineAnswers));

// ----- Calls of the engine ----------------------------------------------------------------------

void deRegistration() {
  const TestGateway gateway;
  static constexpr unsigned char kCookie[] = {0x00, 0x0F, 0xA0, 0xFF};
  serviceorchapi::DeRegisterBladeMe me;
  me.setCookie({kCookie, sizeof(kCookie)});
  Svc::executeServiceorchapiDeRegisterBladeCb(me, 3);
}

constexpr LogRow kExecutors[] = {
    {"executeServiceorchapiDeRegisterBladeCb", 1, deRegistration,
     "executeServiceorchapiDeRegisterBladeCb, cookie: 000fa0ff"},
};
static_assert(std::size(kExecutors) == 1, "a row for each line of executors/DeRegister.cpp");
INSTANTIATE_TEST_SUITE_P(Executors, LogLines, testing::ValuesIn(kExecutors));

}  // namespace
}  // namespace zan_serviceOrchAG
