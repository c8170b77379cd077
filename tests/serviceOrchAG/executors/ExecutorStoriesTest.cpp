#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/serviceOrchAG/executors/ExecutorHarness.h"
#include "tests/support/LogCapture.h"

namespace zan_serviceOrchAG {
namespace {

using test_support::LogCapture;
using test_support::LogLine;

// The lines of a run, and what a failed send reports.

struct Story {
  const char* executor;
  std::vector<LogLine> before;  // up to the send; the function is filled in
  const char* sent;
  const char* notSent;
  const char* failurePrefix;  // of a failed send
};

std::vector<LogLine> withFunction(std::vector<LogLine> lines, const char* function) {
  for (LogLine& line : lines) {
    if (line.function.empty()) {
      line.function = function;
    }
  }
  return lines;
}

std::vector<Story> packageStories() {
  return {
      {"install",
       {{1, "", "INSTALLAPP: appInstanceId = a1"},
        {1, "", "INSTALLAPP: FilePath=/pkg/a1.bin Timeout=600"},
        {1, "", "INSTALLAPP: command : installAppRequest"},
        {4, "", "INSTALLAPP: xml request = " + golden("install.xml")}},
       "INSTALLAPP:  100 : Install message sent to SMA with success request / response for slot 3.",
       "INSTALLAPP: Install message Request/Response between ServiceOrchAG and SMA failed for slot "
       "3.",
       "INSTALLAPP:: "},
      {"upgrade",
       {{1, "", "UPGRADEAPP: appInstanceId = a1"},
        {1, "", "UPGRADEAPP: FilePath=/pkg/a1.bin UpgradeTimeout=900"},
        {1, "", "UPGRADEAPP: request type: upgradeAppRequest"},
        {4, "", "UPGRADEAPP: upgrade request = " + golden("upgrade.xml") + ", slot = 3"}},
       "UPGRADEAPP: 100 : Upgrade message sent to SMA with success request / response for slot 3.",
       "UPGRADEAPP: Upgrade message message Request/Response between ServiceOrchAG and SMA failed "
       "for slot 3.",
       "UPGRADEAPP:: "},
      {"stop",
       {{1, "", "STOPAPP: appInstanceId = a1 "},
        {1, "", "STOPAPP: request type: stopAppRequest"},
        {4, "", "STOPAPP: stop request = " + golden("stop.xml") + ", slot = 3"}},
       "STOPAPP: 100 : Stop message sent to SMA with success request / response for slot 3.",
       "STOPAPP: Stop message Request/Response between ServiceOrchAG and SMA failed for slot 3.",
       "STOPAPP:: "},
      {"uninstall",
       {{1, "", "UNINSTALLAPP: appInstanceId = a1 "},
        {1, "", "UNINSTALLAPP: request type: uninstallAppRequest"},
        {4, "", "UNINSTALLAPP: uninstall request = " + golden("uninstall.xml") + ", slot = 3"}},
       "UNINSTALLAPP: 100 : Uninstall message sent to SMA with success request / response for slot "
       "3.",
       "UNINSTALLAPP: Uninstall message Request/Response between ServiceOrchAG and SMA failed for "
       "slot 3.",
       "UNINSTALLAPP:: "},
  };
}

std::vector<Story> startStory() {
  return {
      {"start",
       {{1, "", "STARTAPP: appInstanceId = a1 "},
        {1, "", "STARTAPP: request type: startAppRequest"},
        {1, "",
         "STARTAPP: ExternalLDULink : reqDataVnics : [Adaptor1:Index1]:[1:2], "
         "[Adaptor2:Index2]:[2:3]"},
        {1, "", "STARTAPP: ExternalLDULink : reqDataVnics : VnicIndex1:[2], VnicIndex2:[3]"},
        {1, "",
         "STARTAPP: ExternalLDULink : reqDataVnics : [Adaptor1:Index1]:[1:10], "
         "[Adaptor2:Index2]:[2:11]"},
        {1, "", "STARTAPP: ExternalLDULink : reqDataVnics : VnicIndex1:[10], VnicIndex2:[11]"},
        {1, "",
         "STARTAPP: ExternalLDULink : reqDataVnics : [Adaptor1:Index1]:[1:48], "
         "[Adaptor2:Index2]:[2:49]"},
        {1, "", "STARTAPP: ExternalLDULink : reqDataVnics : VnicIndex1:[48], VnicIndex2:[49]"},
        {1, "",
         "STARTAPP: ExternalLDULink : reqDataVnics : [Adaptor1:Index1]:[1:20], "
         "[Adaptor2:Index2]:[2:21]"},
        {1, "", "STARTAPP: ExternalLDULink : reqDataVnics : VnicIndex1:[20], VnicIndex2:[21]"},
        {1, "",
         "STARTAPP: AppLDULink : reqDataVnics : [Adaptor1:Index1]:[1:2], [Adaptor2:Index2]:[2:30]"},
        {1, "", "STARTAPP: AppLDULink : reqDataVnics : VnicIndex1:[2], VnicIndex2:[30]"},
        {1, "", "STARTAPP: reqDataVnics : [10,11,2,20,21,3,30,48,49]"},
        {0, "convertMacAddress", "convertMacAddress: aOutMac: 0011.2233.aabb"},
        {1, "getInterfaceList",
         "STARTAPP: ExternalLduLink: interfaceList : interface : [Adaptor1:Index1]:[1:10], "
         "[Adaptor2:Index2]:[2:11]"},
        {1, "getInterfaceList",
         "STARTAPP: ExternalLduLink: interfaceList : interface : VnicIndex1:[10], VnicIndex2:[11]"},
        {0, "convertMacAddress", "convertMacAddress: aOutMac: 0011.2233.aabb"},
        {1, "getInterfaceList",
         "STARTAPP: ExternalLduLink: interfaceList : interface : [Adaptor1:Index1]:[1:2], "
         "[Adaptor2:Index2]:[2:3]"},
        {1, "getInterfaceList",
         "STARTAPP: ExternalLduLink: interfaceList : interface : VnicIndex1:[2], VnicIndex2:[3]"},
        {1, "getInterfaceList",
         "STARTAPP: ExternalLduLink: interfaceList : interface : [Adaptor1:Index1]:[1:20], "
         "[Adaptor2:Index2]:[2:21]"},
        {1, "getInterfaceList",
         "STARTAPP: ExternalLduLink: interfaceList : interface : VnicIndex1:[20], VnicIndex2:[21]"},
        {0, "convertMacAddress", "convertMacAddress: aOutMac: 0000.0000.00ff"},
        {1, "getInterfaceList",
         "STARTAPP: ExternalLduLink: interfaceList : interface : [Adaptor1:Index1]:[1:48], "
         "[Adaptor2:Index2]:[2:49]"},
        {1, "getInterfaceList",
         "STARTAPP: ExternalLduLink: interfaceList : interface : VnicIndex1:[48], VnicIndex2:[49]"},
        {4, "", "STARTAPP: xml request = " + golden("start.xml")}},
       "STARTAPP: 100 : Start message sent to SMA with success request / response for slot 3.",
       "STARTAPP: Start message Request/Response between ServiceOrchAG and SMA failed for slot 3.",
       "STARTAPP:: "},
  };
}

std::vector<Story> startVdpStory() {
  return {
      {"startVdp",
       {{1, "", "STARTAPP: appInstanceId = a1 "},
        {1, "", "STARTAPP: request type: startAppRequest"},
        {1, "",
         "STARTAPP: ExternalLDULink : reqDataVnics : [Adaptor1:Index1]:[1:2], "
         "[Adaptor2:Index2]:[2:3]"},
        {1, "", "STARTAPP: ExternalLDULink : reqDataVnics : VnicIndex1:[2], VnicIndex2:[3]"},
        {1, "",
         "STARTAPP: ExternalLDULink : reqDataVnics : [Adaptor1:Index1]:[1:10], "
         "[Adaptor2:Index2]:[2:11]"},
        {1, "", "STARTAPP: ExternalLDULink : reqDataVnics : VnicIndex1:[10], VnicIndex2:[11]"},
        {1, "",
         "STARTAPP: ExternalLDULink : reqDataVnics : [Adaptor1:Index1]:[1:48], "
         "[Adaptor2:Index2]:[2:49]"},
        {1, "", "STARTAPP: ExternalLDULink : reqDataVnics : VnicIndex1:[48], VnicIndex2:[49]"},
        {1, "",
         "STARTAPP: ExternalLDULink : reqDataVnics : [Adaptor1:Index1]:[1:20], "
         "[Adaptor2:Index2]:[2:21]"},
        {1, "", "STARTAPP: ExternalLDULink : reqDataVnics : VnicIndex1:[20], VnicIndex2:[21]"},
        {1, "",
         "STARTAPP: AppLDULink : reqDataVnics : [Adaptor1:Index1]:[1:2], [Adaptor2:Index2]:[2:30]"},
        {1, "", "STARTAPP: AppLDULink : reqDataVnics : VnicIndex1:[2], VnicIndex2:[30]"},
        {1, "", "STARTAPP: reqDataVnics : [10,11,2,20,21,3,30,48,49]"},
        {1, "", "STARTAPP: vdp : bladeVnic : [Adaptor1:Index1]:[1:48]"},
        {1, "getInterfaceList",
         "STARTAPP: interfaceList :InternalMgmtBootstrap : bladeVnic : [Adaptor:Index]:[2:60]"},
        {1, "getInterfaceList",
         "STARTAPP: interfaceList : InternalMgmtBootstrap : bladeVnic : VnicIndex:[60]"},
        {0, "convertMacAddress", "convertMacAddress: aOutMac: 00aa.bbcc.ddee"},
        {1, "getInterfaceList",
         "STARTAPP: ExternalLduLink: interfaceList : interface : [Adaptor1:Index1]:[1:10], "
         "[Adaptor2:Index2]:[2:11]"},
        {1, "getInterfaceList",
         "STARTAPP: ExternalLduLink: interfaceList : interface : VnicIndex1:[10], VnicIndex2:[11]"},
        {0, "convertMacAddress", "convertMacAddress: aOutMac: 0011.2233.aabb"},
        {1, "getInterfaceList",
         "STARTAPP: ExternalLduLink: interfaceList : interface : [Adaptor1:Index1]:[1:2], "
         "[Adaptor2:Index2]:[2:3]"},
        {1, "getInterfaceList",
         "STARTAPP: ExternalLduLink: interfaceList : interface : VnicIndex1:[2], VnicIndex2:[3]"},
        {1, "getInterfaceList",
         "STARTAPP: ExternalLduLink: interfaceList : interface : [Adaptor1:Index1]:[1:20], "
         "[Adaptor2:Index2]:[2:21]"},
        {1, "getInterfaceList",
         "STARTAPP: ExternalLduLink: interfaceList : interface : VnicIndex1:[20], VnicIndex2:[21]"},
        {0, "convertMacAddress", "convertMacAddress: aOutMac: 0000.0000.00ff"},
        {1, "getInterfaceList",
         "STARTAPP: ExternalLduLink: interfaceList : interface : [Adaptor1:Index1]:[1:48], "
         "[Adaptor2:Index2]:[2:49]"},
        {1, "getInterfaceList",
         "STARTAPP: ExternalLduLink: interfaceList : interface : VnicIndex1:[48], VnicIndex2:[49]"},
        {4, "", "STARTAPP: xml request = " + golden("startVdp.xml")}},
       "STARTAPP: 100 : Start message sent to SMA with success request / response for slot 3.",
       "STARTAPP: Start message Request/Response between ServiceOrchAG and SMA failed for slot 3.",
       "STARTAPP:: "},
  };
}

std::vector<Story> slotStories() {
  return {
      {"platformLogLevel",
       {{1, "", "PLATFORMLOGLEVELSET: slot = 3 "},
        {1, "", "PLATFORMLOGLEVELSET: request type: platformLogLevelSetRequest"},
        {4, "",
         "PLATFORMLOGLEVELSET: platformLogLevelSet request = " + golden("platformLogLevel.xml") +
             ", slot = 3"}},
       "PLATFORMLOGLEVELSET: 100 : PlatformLogLevelSet message sent to SMA with success request / "
       "response for slot 3.",
       "PLATFORMLOGLEVELSET: PlatformLogLevelSet message Request/Response between ServiceOrchAG "
       "and SMA failed for slot 3.",
       "PLATFORMLOGLEVELSET:: "},
      {"formatDisk",
       {{1, "", "FORMATDISK: request type: formatDiskRequest"},
        {1, "", "FORMATDISK: slot = 3 "},
        {4, "", "FORMATDISK: format disk request = " + golden("formatDisk.xml")}},
       "FORMATDISK: 100 : FormatDisk message sent to SMA with success request / response.",
       "FORMATDISK: FormatDisk message Request/Response between ServiceOrchAG and SMA failed.",
       "FORMATDISK:: "},
      {"timeZone",
       {{1, "", "SETTINGUPDATE: request type : platformSettingsUpdate, slot : 3 "},
        {4, "updateTimeZoneCache", "serviceOrchAG:updateTimeZoneCache entered"},
        {1, "",
         "SETTINGUPDATE: timezone[Europe/Berlin (summer time)] : Postfix "
         "timezone[CET-1CEST,M3.5.0,M10.5.0/3] "},
        {4, "",
         "SETTINGUPDATE: setting update request = " + golden("timeZone.xml") + ", slot = 3"}},
       "SETTINGUPDATE: 100 : Setting update message sent to SMA with success request / response "
       "for slot 3.",
       "SETTINGUPDATE: Setting update message Request/Response between ServiceOrchAG and SMA "
       "failed for slot 3.",
       "SETTINGUPDATE:: "},
  };
}

std::vector<Story> clearLogDataStories() {
  return {
      {"clearApplicationLogData",
       {{1, "", "CLEARLOGDATA : APPLICATION : appInstanceId = a1 "},
        {1, "", "CLEARLOGDATA : APPLICATION : request type: clearLogDataRequest"},
        {4, "",
         "CLEARLOGDATA : APPLICATION : clear Log request = " +
             golden("clearApplicationLogData.xml")}},
       "CLEARLOGDATA : APPLICATION : 100 : ClearLogData message sent to SMA.",
       "CLEARLOGDATA : APPLICATION : ClearLogData  message is not sent to SMA.",
       nullptr},
      {"clearSystemLogData",
       {{1, "", "CLEARLOGDATA : SYSTEM : slot = 3 "},
        {1, "", "CLEARLOGDATA : SYSTEM : request type : clearLogDataRequest, slot : 3"},
        {4, "",
         "CLEARLOGDATA : SYSTEM : clear Log request = " + golden("clearSystemLogData.xml") +
             ", slot = 3"}},
       "CLEARLOGDATA : SYSTEM : 100 : ClearLogData message sent to SMA.",
       "CLEARLOGDATA : SYSTEM : ClearLogData  message is not sent to SMA.",
       nullptr},
  };
}

std::vector<Story> stories() {
  std::vector<Story> all;
  for (const auto& some :
       {packageStories(), startStory(), startVdpStory(), slotStories(), clearLogDataStories()}) {
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

void PrintTo(const Story& story, std::ostream* out) {
  *out << story.executor;
}

class ExecutorStory : public testing::TestWithParam<Story> {
 protected:
  const Executor& executor_ = executorNamed(GetParam().executor);
};
INSTANTIATE_TEST_SUITE_P(Executors, ExecutorStory, testing::ValuesIn(stories()),
                         [](const auto& each) { return std::string(each.param.executor); });

TEST_P(ExecutorStory, BladeTakesTheCommand_TellsEachStep) {
  const ScriptedBlades blades;
  const LogCapture log;
  EXPECT_FALSE(runExecutor(executor_).hasFailed);
  std::vector<LogLine> expected = withFunction(GetParam().before, executor_.function);
  expected.push_back({1, executor_.function, GetParam().sent});
  EXPECT_EQ(log.lines(), expected);
}

TEST_P(ExecutorStory, SendFails_TellsEachStepAndThatItFailed) {
  const ScriptedBlades blades(578);
  const LogCapture log;
  EXPECT_TRUE(runExecutor(executor_).hasFailed);
  std::vector<LogLine> expected = withFunction(GetParam().before, executor_.function);
  expected.push_back({8, executor_.function, GetParam().notSent});
  EXPECT_EQ(log.lines(), expected);
}

struct FailedSend {
  unsigned int status;
  std::uint32_t bits;
  const char* text;
};
constexpr FailedSend kFailedSends[] = {
    {102, 1, "In Progress"},
    {500, 1, "Invalid command"},
    {506, 8, "Operation time out"},
    {507, 2048, "Queue is full"},
    {508, 2097152, "Operation failed"},
    {509, 1048576, "Unknown Error try again"},
    {510, 67108864, "Blade is not register, re-register the blade"},
    {511, 64, "Not able to recognized blade"},
    {512, 16, "Error connecting to ZED for file transfer"},
    {513, 1, "Format validation failure"},
    {514, 64, "Failure validating checksum"},
    {515, 1, "Unknown status code"},
    {575, 1, "Unknown status code"},
    {576, 16, "SMAClient channel is not initialized"},
    {577, 16, "REQ/REP between ServiceAG and SMA failed"},
    {578, 16, "serviceAG received timeout or zero response part from SMA"},
    {579, 16, "No response received or missing message part from SMA"},
    {580, 16, "SMA is not register for slot"},
    {581, 16, "Blade token does not match, please format the blade"},
    {582, 1, "Unknown status code"},
    {600, 1, "Unknown status code"},
};

TEST_P(ExecutorStory, FailedSend_ReportsItsStatus) {
  for (const FailedSend& row : kFailedSends) {
    const ScriptedBlades blades(row.status);
    const Outcome outcome = runExecutor(executor_);
    ASSERT_TRUE(outcome.hasFailed);
    if (GetParam().failurePrefix == nullptr) {  // clearing logs tells no cause
      EXPECT_EQ(outcome.failure.bits, 1U);
      EXPECT_EQ(outcome.failure.code, 1003U);
      EXPECT_EQ(outcome.failure.text,
                executor_.name == std::string("clearSystemLogData")
                    ? "CLEARLOGDATA : SYSTEM :: ClearLogData message is not sent to SMA."
                    : "CLEARLOGDATA : APPLICATION :: ClearLogData message is not sent to SMA.");
      continue;
    }
    EXPECT_EQ(outcome.failure.bits, row.bits) << row.status;
    EXPECT_EQ(outcome.failure.code, row.status);
    EXPECT_EQ(outcome.failure.text, std::string(GetParam().failurePrefix) + row.text);
  }
}

}  // namespace
}  // namespace zan_serviceOrchAG
