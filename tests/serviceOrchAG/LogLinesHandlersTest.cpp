#include <chrono>
#include <future>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>

#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/ClientMap.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/serviceOrchAG/LogLines.h"
#include "tests/support/Configured.h"
#include "tests/support/ManualClock.h"
#include "tests/support/ValidationAnswer.h"

// The lines of the request handlers and of what they share.

namespace zan_serviceOrchAG {
namespace {

using test_support::answerValidations;
using test_support::Configured;
using test_support::ManualClock;

/// One request of slot 3; what it is answered is of no interest here.
void request(TestGateway& gateway, const char* command, const std::string& document,
             const char* action = "", const char* identity = "sma_slot3") {
  const std::unique_ptr<Response> response(
      gateway.handler.handleCb(command, action, "id-1", document, identity));
}

/// One request of slot 3, whose blade is registered and valid.
void requestOfAKnownBlade(const char* command, const std::string& document,
                          const char* action = "") {
  TestGateway gateway;
  createSMAClient("3", "10.0.0.3", "5560", true);
  request(gateway, command, document, action);
}

// ----- Slot identity and host key ---------------------------------------------------------------

void identityWithoutASlot() {
  TestGateway gateway;
  EXPECT_THROW(request(gateway, "heartbeat", "<x/>", "", "blade1"), std::invalid_argument);
}

void identityWithABrokenSlot() {
  TestGateway gateway;
  EXPECT_THROW(request(gateway, "heartbeat", "<x/>", "", "sma_slotX"), std::invalid_argument);
}

/// Registers with these tags below the request; the engine finds the blade valid.
void registerBlade(const std::string& tags) {
  const Configured configured({"supervisor.host_key=/nonexistent/key.pub"});
  TestGateway gateway;
  answerValidations(gateway.service, true, false, "engine's token");
  request(gateway, "register", "<registerRequest>" + tags + "</registerRequest>");
}

void registerWithTheAddressOnly() {
  registerBlade("<bladeSlotId>3</bladeSlotId><ip>10.0.0.3</ip><port>5560</port>");
}

constexpr LogRow kSlotIdentity[] = {
    {"getIdentitySlotId", 8, identityWithoutASlot,
     "SMA sending wrong client identity. Got = blade1  Expected = sma_slot<#ID>"},
    {"getIdentitySlotId", 8, identityWithABrokenSlot,
     "Exception caught for sma_slotX : slot Id [X] : not a decimal number: 'X'"},
    {"getZedPubKey", 1, registerWithTheAddressOnly, "Unable to Open file : /nonexistent/key.pub"},
};
static_assert(std::size(kSlotIdentity) == 3, "a row for each line of handlers/SlotIdentity.cpp");
INSTANTIATE_TEST_SUITE_P(SlotIdentity, LogLines, testing::ValuesIn(kSlotIdentity));

// ----- Register ---------------------------------------------------------------------------------

void registerWithoutAnAnswer() {
  TestGateway gateway;
  std::future<void> registration;  // outlives the clock, whose end lets it end
  ManualClock clock;
  registration = std::async(std::launch::async, [&gateway] {
    request(gateway, "register",
            "<registerRequest><bladeSlotId>3</bladeSlotId><ip>10.0.0.3</ip><port>5560</port>"
            "</registerRequest>");
  });
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::seconds(20)));
  clock.advance(std::chrono::seconds(20));
  registration.get();
}

constexpr LogRow kRegister[] = {
    {"AG_registerReqCb", 1, registerWithTheAddressOnly,
     "Triggering ValidateBladeState method for slot : 3, Message ID : id-1"},
    {"AG_registerReqCb", 1, registerWithTheAddressOnly,
     "ValidateBladeState : wait... for slot : 3, Message ID : id-1 "},
    {"AG_registerReqCb", 8, registerWithoutAnAnswer,
     "DME timeout during ValidateBladeState for slot : 3, Message ID : id-1"},
    {"AG_registerReqCb", 1, registerWithTheAddressOnly,
     "Message ID  = id-1, slotId = 3, bladeValid = true, shouldRetry = false, token = engine's "
     "token"},
    {"AG_registerReqCb", 1, registerWithTheAddressOnly,
     "Triggering OsControllerVersion method for slot : 3, Message ID : id-1"},
};
static_assert(std::size(kRegister) == 5, "a row for each line of handlers/Register.cpp");
INSTANTIATE_TEST_SUITE_P(Register, LogLines, testing::ValuesIn(kRegister));

void registerWithNothing() {
  registerBlade("");
}

void registerWithTheSlotOnly() {
  registerBlade("<bladeSlotId>3</bladeSlotId>");
}

void registerWithoutAPort() {
  registerBlade("<bladeSlotId>3</bladeSlotId><ip>10.0.0.3</ip>");
}

void registerWithEmptyImages() {
  registerBlade(
      "<bladeSlotId>3</bladeSlotId><ip>10.0.0.3</ip><port>5560</port>"
      "<cachePlatformImage/><runningPlatformImage/>");
}

constexpr LogRow kRegisterTags[] = {
    {"errorResponse", 6, registerWithNothing, "No <bladeSlotId> tag found in the register request"},
    {"errorResponse", 6, registerWithTheSlotOnly, "No <ip> tag found in the register request"},
    {"errorResponse", 6, registerWithoutAPort, "No <port> tag found in the register request"},
    {"missingTagError", 5, registerWithTheAddressOnly,
     "No <token> tag found in the register request"},
    {"missingTagError", 5, registerWithTheAddressOnly,
     "No <authorizedPubKey> tag found in the register request"},
    {"missingTagError", 5, registerWithTheAddressOnly,
     "No <bladeCurrTime> tag found in the register request"},
    {"missingTagError", 5, registerWithTheAddressOnly,
     "No <upTime> tag found in the register request"},
    {"missingTagError", 5, registerWithTheAddressOnly,
     "No <cachePlatformImage> tag found in the register request"},
    {"missingTagError", 5, registerWithTheAddressOnly,
     "No <runningPlatformImage> tag found in the register request"},
    {"missingTagError", 5, registerWithEmptyImages,
     "No <osVersion> tag found in the register request", 2},
    {"missingTagError", 5, registerWithEmptyImages,
     "No <imageName> tag found in the register request", 2},
    {"missingTagError", 5, registerWithEmptyImages, "No <size> tag found in the register request",
     2},
    {"missingTagError", 5, registerWithEmptyImages,
     "No <checksum> tag found in the register request", 2},
};
static_assert(std::size(kRegisterTags) == 3 + 6 + 4,
              "a row for each tag that a request must, should, and each of its images should hold");
INSTANTIATE_TEST_SUITE_P(RegisterTags, LogLines, testing::ValuesIn(kRegisterTags));

// ----- Heartbeat --------------------------------------------------------------------------------

void heartbeatWithNothing() {
  requestOfAKnownBlade("heartbeat", "<heartbeatRequest/>");
}

void heartbeatWithWords() {
  requestOfAKnownBlade("heartbeat",
                       "<heartbeatRequest><count> often </count><timer>12s</timer>"
                       "</heartbeatRequest>");
}

constexpr LogRow kHeartbeat[] = {
    {"missingTagError", 5, heartbeatWithNothing, "No <count> tag found in the heartbeat request"},
    {"missingTagError", 5, heartbeatWithNothing, "No <timer> tag found in the heartbeat request"},
    {"AG_heartbeatReqCb", 8, heartbeatWithWords,
     "Heartbeat exception caught for slot[3]: count[often] : not a decimal number: 'often'"},
    {"AG_heartbeatReqCb", 8, heartbeatWithWords,
     "Heartbeat exception caught for slot[3]: timer[12s] : not a decimal number: '12s'"},
    {"AG_heartbeatReqCb", 1, heartbeatWithNothing,
     "Triggering UpdateSmaHeartbeat method for slot : 3, Message ID : id-1"},
};
static_assert(std::size(kHeartbeat) == 2 + 2 + 1,
              "two rows for each tag of a heartbeat, and one for the call of the engine");
INSTANTIATE_TEST_SUITE_P(Heartbeat, LogLines, testing::ValuesIn(kHeartbeat));

// ----- Application failure ----------------------------------------------------------------------

void appFailure() {
  requestOfAKnownBlade("appFailure",
                       "<appFailureRequest><appInstanceId>17</appInstanceId></appFailureRequest>");
}

void appFailureWithNothing() {
  requestOfAKnownBlade("appFailure", "<appFailureRequest/>");
}

constexpr LogRow kAppFailure[] = {
    {"errorResponse", 6, appFailureWithNothing,
     "No <appInstanceId> tag found in the appFailure request"},
    {"AG_appFailureReqCb", 5, appFailure,
     "Received appFailure request for appInstance slot[3]: 17"},
    {"AG_appFailureReqCb", 1, appFailure,
     "Triggering NotifyAppFailure method for slot : 3, Message ID : id-1"},
};
static_assert(std::size(kAppFailure) == 1 + 2,
              "a row for the tag that a report must hold, and for each line of "
              "handlers/AppFailure.cpp");
INSTANTIATE_TEST_SUITE_P(AppFailure, LogLines, testing::ValuesIn(kAppFailure));

// ----- Command progress -------------------------------------------------------------------------

/// A report with these tags before the ones that no line here depends on.
void progress(const std::string& tags) {
  requestOfAKnownBlade("commandProgress",
                       "<commandProgressUpdateRequest>" + tags +
                           "<operProgress>50</operProgress><operStatus>running</operStatus>"
                           "<code>102</code><ack>no</ack></commandProgressUpdateRequest>",
                       "update");
}

void progressOfAnInstance() {
  progress("<appInstanceId>17</appInstanceId><operCmd>app.startApp</operCmd>");
}

void progressOfADiskFormat() {
  progress("<appInstanceId>-1</appInstanceId><operCmd>formatDisk</operCmd><errorDesc/>");
}

void progressOfAnImageUpload() {
  progress("<appInstanceId>-1</appInstanceId><operCmd>uploadPlatformImage</operCmd><errorDesc/>");
}

constexpr LogRow kCommandProgress[] = {
    {"missingTagError", 5, progressOfAnInstance,
     "No <errorDesc> tag found in the commandProgressUpdate request"},
    {"AG_commandProgressUpdateReqCb", 5, progressOfAnInstance,
     "Triggering UpgradeProgress method for slot = 3 , operCmd = startApp, percentage = 50, MesgId "
     "=  id-1, appInstanceId = 17"},
    {"AG_commandProgressUpdateReqCb", 1, progressOfAnInstance,
     "invokeZanDmeServiceorchapiUpdateProgress for slot : 3, Message ID : id-1"},
    {"AG_commandProgressUpdateReqCb", 1, progressOfADiskFormat,
     "invokeZanDmeServiceorchapiUpdateDiskFormatStatus for slot : 3, Message ID : id-1"},
    {"AG_commandProgressUpdateReqCb", 1, progressOfAnImageUpload,
     "invokeZanDmeServerapiOsControllerUpgradeProgress for slot : 3, Message ID : id-1"},
};
static_assert(std::size(kCommandProgress) == 1 + 4,
              "a row for the tag that a report should hold, and for each line of "
              "handlers/CommandProgress.cpp");
INSTANTIATE_TEST_SUITE_P(CommandProgress, LogLines, testing::ValuesIn(kCommandProgress));

// ----- Platform information ---------------------------------------------------------------------

/// Reports these tags of a blade that is registered and valid.
void reportPlatform(TestGateway& gateway, const std::string& tags) {
  createSMAClient("3", "10.0.0.3", "5560", true);
  request(gateway, "platformInfo",
          "<platformInfoUpdateRequest>" + tags + "</platformInfoUpdateRequest>", "update");
}

/// As above; the engine takes the report.
void reportPlatform(const std::string& tags) {
  TestGateway gateway;
  gateway.service.onSend([](const test_support::RecordingSvc::Sent& call) {
    if (call.classId == serviceorchapi::UpdatePlatformInfoMe::kClassId) {
      serviceorchapi::UpdatePlatformInfoMe me;
      me.setCookie(call.cookie);
      Svc::successRspServiceorchapiUpdatePlatformInfoCb(me);
    }
  });
  reportPlatform(gateway, tags);
}

void reportWithNothing() {
  reportPlatform("");
}

void reportWithoutAnAnswer() {
  TestGateway gateway;
  std::future<void> report;  // outlives the clock, whose end lets it end
  ManualClock clock;
  report = std::async(std::launch::async, [&gateway] { reportPlatform(gateway, ""); });
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::seconds(10)));
  clock.advance(std::chrono::seconds(10));
  report.get();
}

void reportWithEachGroupTwice() {
  reportPlatform(
      "<Cpu/><Memory/><AppsMemory/><DiskFilesystem/>"
      "<Cpu/><Memory/><AppsMemory/><DiskFilesystem/>");
}

void reportWithEmptyGroups() {
  reportPlatform("<Cpu/><Memory/><AppsMemory/><DiskFilesystem/>");
}

void reportWithEachInnerGroupTwice() {
  reportPlatform(
      "<Memory><minus1/><minus1/></Memory>"
      "<AppsMemory><CurrentSnapshot/><CurrentSnapshot/></AppsMemory>"
      "<DiskFilesystem><minus1/><minus1/></DiskFilesystem>");
}

void reportWithEmptyInnerGroups() {
  reportPlatform(
      "<Memory><minus1/></Memory><AppsMemory><CurrentSnapshot/></AppsMemory>"
      "<DiskFilesystem><minus1/></DiskFilesystem>");
}

void reportWithAnEmptyDisk() {
  reportPlatform("<DiskFilesystem><minus1><Disk/></minus1></DiskFilesystem>");
}

void reportWithAnEmptyApplication() {
  reportPlatform("<application/>");
}

void reportWithUnknownStates() {
  reportPlatform(
      "<application><appInstanceId>a1</appInstanceId><adminStatus>on</adminStatus>"
      "<operStatus>busy</operStatus></application>");
}

constexpr LogRow kPlatformInfo[] = {
    {"AG_platformInfoUpdateReqCb", 6, reportWithEmptyGroups,
     "No <minus5> tag found for Cpu in platformInfoUpdate."},
    {"AG_platformInfoUpdateReqCb", 8, reportWithEmptyGroups,
     "No <minus1> tag found for Memory in platformInfoUpdate."},
    {"AG_platformInfoUpdateReqCb", 8, reportWithEachInnerGroupTwice,
     "2 <minus1> tag found for Memory in platformInfoUpdate."},
    {"AG_platformInfoUpdateReqCb", 8, reportWithUnknownStates,
     "AdminStatus value[on] incorrect for appInstance a1 in platformInfo message"},
    {"AG_platformInfoUpdateReqCb", 8, reportWithUnknownStates,
     "operStatus value[busy] incorrect for appInstance a1 in platformInfo message"},
    {"AG_platformInfoUpdateReqCb", 1, reportWithNothing,
     "Triggering ValidateAppInstances method for slot : 3, Message ID : id-1"},
    {"AG_platformInfoUpdateReqCb", 1, reportWithNothing,
     "Triggering UpdatePlatformInfo method for slot : 3, Message ID : id-1"},
    {"AG_platformInfoUpdateReqCb", 1, reportWithNothing,
     "UpdatePlatformInfo : wait... for slot : 3, Message ID : id-1"},
    {"AG_platformInfoUpdateReqCb", 8, reportWithoutAnAnswer,
     "DME timeout during UpdatePlatformInfo for slot 3, Message ID : id-1"},
};
static_assert(std::size(kPlatformInfo) == 9, "a row for each line of handlers/PlatformInfo.cpp");
INSTANTIATE_TEST_SUITE_P(PlatformInfo, LogLines, testing::ValuesIn(kPlatformInfo));

constexpr LogRow kPlatformInfoTags[] = {
    {"missingTagError", 5, reportWithNothing,
     "No <OsVersion> tag found in the platformInfoUpdate request"},
    {"missingTagError", 5, reportWithNothing,
     "No <Sysuptime> tag found in the platformInfoUpdate request"},
    {"missingTagError", 5, reportWithNothing,
     "No <Cpu> tag found in the platformInfoUpdate request"},
    {"missingTagError", 5, reportWithNothing,
     "No <Memory> tag found in the platformInfoUpdate request"},
    {"missingTagError", 5, reportWithNothing,
     "No <AppsMemory> tag found in the platformInfoUpdate request"},
    {"missingTagError", 5, reportWithNothing,
     "No <DiskFilesystem> tag found in the platformInfoUpdate request"},
    {"missingTagError", 5, reportWithNothing,
     "No <application> tag found in the platformInfoUpdate request"},
    {"extraTagError", 8, reportWithEachGroupTwice,
     "More <Cpu> tag found in the platformInfoUpdate request"},
    {"extraTagError", 8, reportWithEachGroupTwice,
     "More <Memory> tag found in the platformInfoUpdate request"},
    {"extraTagError", 8, reportWithEachGroupTwice,
     "More <AppsMemory> tag found in the platformInfoUpdate request"},
    {"extraTagError", 8, reportWithEachGroupTwice,
     "More <DiskFilesystem> tag found in the platformInfoUpdate request"},
    {"AG_platformInfoUpdateReqCb", 6, reportWithEmptyGroups,
     "No <minus1> tag found for Cpu in platformInfoUpdate."},
    {"AG_platformInfoUpdateReqCb", 6, reportWithEmptyGroups,
     "No <minus15> tag found for Cpu in platformInfoUpdate."},
    {"AG_platformInfoUpdateReqCb", 8, reportWithEmptyGroups,
     "No <CurrentSnapshot> tag found for AppsMemory in platformInfoUpdate."},
    {"AG_platformInfoUpdateReqCb", 8, reportWithEmptyGroups,
     "No <minus1> tag found for DiskFilesystem in platformInfoUpdate."},
    {"AG_platformInfoUpdateReqCb", 8, reportWithEachInnerGroupTwice,
     "2 <CurrentSnapshot> tag found for AppsMemory in platformInfoUpdate."},
    {"AG_platformInfoUpdateReqCb", 8, reportWithEachInnerGroupTwice,
     "2 <minus1> tag found for DiskFilesystem in platformInfoUpdate."},
    {"AG_platformInfoUpdateReqCb", 6, reportWithEmptyInnerGroups,
     "No <MemTotalKB> tag found for Memory in platformInfoUpdate."},
    {"AG_platformInfoUpdateReqCb", 6, reportWithEmptyInnerGroups,
     "No <MemFreeKB> tag found for Memory in platformInfoUpdate."},
    {"AG_platformInfoUpdateReqCb", 6, reportWithEmptyInnerGroups,
     "No <MemUsedKB> tag found for Memory in platformInfoUpdate."},
    {"AG_platformInfoUpdateReqCb", 6, reportWithEmptyInnerGroups,
     "No <MemTotalKB> tag found for AppsMemory in platformInfoUpdate."},
    {"missingTagError", 5, reportWithEmptyInnerGroups,
     "No <Disk> tag found in the platformInfoUpdate request"},
    {"missingTagError", 5, reportWithAnEmptyDisk,
     "No <DiskName> tag found in the platformInfoUpdate request"},
    {"AG_platformInfoUpdateReqCb", 6, reportWithAnEmptyDisk,
     "No <DiskTotalKB> tag found for DiskFilesystem in platformInfoUpdate."},
    {"AG_platformInfoUpdateReqCb", 6, reportWithAnEmptyDisk,
     "No <DiskFreeKB> tag found for DiskFilesystem in platformInfoUpdate."},
    {"AG_platformInfoUpdateReqCb", 6, reportWithAnEmptyDisk,
     "No <DiskUsedKB> tag found for DiskFilesystem in platformInfoUpdate."},
    {"missingTagError", 5, reportWithAnEmptyDisk,
     "No <DiskMountPoint> tag found in the platformInfoUpdate request"},
    {"missingTagError", 5, reportWithAnEmptyApplication,
     "No <appInstanceId> tag found in the platformInfoUpdate request"},
    {"missingTagError", 5, reportWithAnEmptyApplication,
     "No <operStatus> tag found in the platformInfoUpdate request"},
    {"missingTagError", 5, reportWithAnEmptyApplication,
     "No <installedVersion> tag found in the platformInfoUpdate request"},
};
static_assert(std::size(kPlatformInfoTags) == 7 + 4 + 4 + 2 + 5 + 5 + 3,
              "the other rows of the tags that a report should hold, trigger by trigger");
INSTANTIATE_TEST_SUITE_P(PlatformInfoTags, LogLines, testing::ValuesIn(kPlatformInfoTags));

}  // namespace
}  // namespace zan_serviceOrchAG
