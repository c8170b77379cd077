#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "model/comm/DateTimeMo.h"
#include "model/sd/AppInstanceMo.h"
#include "model/sd/BladeMo.h"
#include "model/sd/ChassisMo.h"
#include "model/sd/ExternalLduLinkMo.h"
#include "model/sd/ResourceMo.h"
#include "model/sd/SlotMo.h"
#include "model/serviceorchapi/Methods.h"
#include "model/sm/AppMo.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/serviceOrchAG/executors/ExecutorHarness.h"
#include "tests/serviceOrchAG/executors/StartTarget.h"
#include "tests/support/Configured.h"
#include "tests/support/LogCapture.h"

namespace zan_serviceOrchAG {

void PrintTo(const Executor& executor, std::ostream* out) {
  *out << executor.name;
}

namespace {

using method::Config;
using method::Value;
using test_support::Configured;
using test_support::LogCapture;
using test_support::LogLine;

std::string nameOf(const testing::TestParamInfo<Executor>& info) {
  return info.param.name;
}

std::vector<Executor> executorsWithHooks() {
  std::vector<Executor> found;
  for (const Executor& each : executors()) {
    if (each.hookStem != nullptr) {
      found.push_back(each);
    }
  }
  return found;
}

class EveryExecutor : public testing::TestWithParam<Executor> {};
INSTANTIATE_TEST_SUITE_P(Executors, EveryExecutor, testing::ValuesIn(executors()), nameOf);

TEST_P(EveryExecutor, OnEveryPlatform_SendsItsDocumentToTheByte) {
  for (const char* platform : {"standard", "qvm1", "qvm2", "qvm3"}) {
    const std::string document = goldenOn(platform, GetParam().name);
    ASSERT_FALSE(document.empty());
    const Configured configured({std::string("supervisor.platform=") + platform});
    const ScriptedBlades blades;
    const Outcome outcome = runExecutor(GetParam());
    EXPECT_FALSE(outcome.hasFailed) << outcome.failure.text.c_str();
    EXPECT_TRUE(outcome.isAnswered);
    EXPECT_EQ(blades.sent(), (std::vector<SentCommand>{{"3", document, GetParam().command}}))
        << platform;
  }
}

TEST_P(EveryExecutor, SendQueued_CountsAsFailed) {
  const ScriptedBlades blades(101);
  const Outcome outcome = runExecutor(GetParam());
  EXPECT_TRUE(outcome.hasFailed);
  EXPECT_EQ(outcome.failure.bits, 1U);
  EXPECT_EQ(outcome.failure.code, GetParam().command == std::string("clearLogData") ? 1003U : 101U);
}

class HookedExecutor : public testing::TestWithParam<Executor> {
 protected:
  std::string hook(const char* kind) const { return std::string(kind) + GetParam().hookStem; }
};
INSTANTIATE_TEST_SUITE_P(Executors, HookedExecutor, testing::ValuesIn(executorsWithHooks()),
                         nameOf);

TEST_P(HookedExecutor, HookBeforeWantsAReturn_NothingIsSentAndTheStageSucceeds) {
  for (const std::int32_t mask : {2, 3, 6, -1}) {
    const ActivityAt activity(hook("FINJ_PRE_"), mask);
    const ScriptedBlades blades;
    const Outcome outcome = runExecutor(GetParam());
    EXPECT_FALSE(outcome.hasFailed);
    EXPECT_TRUE(outcome.isAnswered);
    EXPECT_TRUE(blades.sent().empty());
  }
}

TEST_P(HookedExecutor, HookBeforeWithAnotherActivity_LeavesTheStageUnanswered) {
  const ActivityAt activity(hook("FINJ_PRE_"), 1);
  const ScriptedBlades blades;
  const Outcome outcome = runExecutor(GetParam());
  EXPECT_FALSE(outcome.hasFailed);
  EXPECT_FALSE(outcome.isAnswered);
  EXPECT_TRUE(blades.sent().empty());
}

TEST_P(HookedExecutor, CrashAtAnyHook_EndsTheProcess) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const auto run = [this](const char* kind) {
    const ActivityAt activity(hook(kind), 4);
    const ScriptedBlades blades;
    runExecutor(GetParam());
  };
  EXPECT_DEATH(run("FINJ_PRE_"), "");
  EXPECT_DEATH(run("FINJ_FSM_FAIL_"), "");
  EXPECT_DEATH(run("FINJ_POST_"), "");
}

TEST_P(HookedExecutor, InjectedFailure_ReportsTheBitsThatTheActivityWrote) {
  for (const std::int32_t bits : {2048, 0}) {
    const ActivityAt activity(hook("FINJ_FSM_FAIL_"), 8, bits);
    const ScriptedBlades blades;
    const Outcome outcome = runExecutor(GetParam());
    ASSERT_TRUE(outcome.hasFailed);
    EXPECT_EQ(outcome.failure.bits, static_cast<std::uint32_t>(bits));
    EXPECT_EQ(outcome.failure.code, 0U);
    EXPECT_EQ(outcome.failure.text, "FINJ_INJECTED");
    EXPECT_TRUE(outcome.isAnswered);
    EXPECT_TRUE(blades.sent().empty());
  }
}

TEST_P(HookedExecutor, ReturnAtTheFailureHook_SendsNothingAndSucceeds) {
  const ActivityAt activity(hook("FINJ_FSM_FAIL_"), 2, 2048);
  const ScriptedBlades blades;
  EXPECT_FALSE(runExecutor(GetParam()).hasFailed);
  EXPECT_TRUE(blades.sent().empty());
}

TEST_P(HookedExecutor, HookAfter_RunsAfterASendWhateverItsOutcome) {
  const ActivityAt activity(hook("FINJ_POST_"), 1);
  for (const unsigned int status : {100U, 578U}) {
    const ScriptedBlades blades(status);
    const Outcome outcome = runExecutor(GetParam());
    EXPECT_FALSE(outcome.isAnswered);
    EXPECT_EQ(outcome.hasFailed, status != 100);
    EXPECT_EQ(blades.sent().size(), 1U);
  }
}

TEST_P(HookedExecutor, HookAfterWithAReturn_ChangesNothing) {
  const ActivityAt activity(hook("FINJ_POST_"), 2);
  const ScriptedBlades blades;
  const Outcome outcome = runExecutor(GetParam());
  EXPECT_TRUE(outcome.isAnswered);
  EXPECT_FALSE(outcome.hasFailed);
}

TEST_P(HookedExecutor, RefusedStage_SkipsTheHookAfter) {
  const ActivityAt activity(hook("FINJ_POST_"), 1);
  const ScriptedBlades blades;
  const Outcome outcome = runExecutor(GetParam(), Config());
  EXPECT_TRUE(outcome.hasFailed);
  EXPECT_TRUE(outcome.isAnswered);
  EXPECT_TRUE(blades.sent().empty());
}

// ----- What is refused before anything is sent ------------------------------------------------

struct Refusal {
  const char* executor;
  const char* what;
  void (*change)(Config& target);
  const char* failure;
  const char* line;  // of level 8; null when there is none
};

/// Takes away what travels along with the target.
void dropChildren(Config& target) {
  Config bare(target.classId(), target.dn());
  for (const auto& [property, value] : target.values()) {
    bare.set(property, value);
  }
  target = bare;
}

template <auto kProperty>
void unset(Config& target) {
  target.set(kProperty->id, Value());
}

/// Sets a property of the application below the target.
template <auto kProperty, class T>
void setOfApp(Config& target, T value) {
  Config app = target.children().front();
  app.set(kProperty->id, Value(std::move(value)));
  dropChildren(target);
  target.addChild(std::move(app));
}

void nothing(Config& target) {
  target = Config();
}
void anotherClass(Config& target) {
  target = Config(0x286, mo::Dn("sys/chassis-1/slot-3/monitor"));
}
void anotherJob(Config& target) {
  target.set(sd::AppInstanceMo::kJobType.id, Value(std::uint8_t{4}));
}
void idZero(Config& target) {
  target.set(sd::AppInstanceMo::kAppInstanceId.id, Value(base::String("0")));
}
void idEmpty(Config& target) {
  target.set(sd::AppInstanceMo::kAppInstanceId.id, Value(base::String("")));
}
void idColons(Config& target) {
  target.set(sd::AppInstanceMo::kAppInstanceId.id, Value(base::String("::")));
}
void packageEmpty(Config& target) {
  setOfApp<&sm::AppMo::kPackageFile>(target, base::String());
}
void diskZero(Config& target) {
  setOfApp<&sm::AppMo::kReqDataHdd>(target, std::uint64_t{0});
}
void diskThatWrapsToZero(Config& target) {
  setOfApp<&sm::AppMo::kReqDataHdd>(target, std::uint64_t{1} << 54);
}
void installTimeoutZero(Config& target) {
  setOfApp<&sm::AppMo::kInstallTimeout>(target, std::uint64_t{0});
}
void uninstallTimeoutZero(Config& target) {
  setOfApp<&sm::AppMo::kUninstallTimeout>(target, std::uint64_t{0});
}
void upgradeTimeoutZero(Config& target) {
  setOfApp<&sm::AppMo::kUpgradeTimeout>(target, std::uint64_t{0});
}
void noAppAndAnotherJob(Config& target) {
  dropChildren(target);
  anotherJob(target);
}
void anotherCommand(Config& target) {
  target.set(sd::SlotMo::kSlotCommand.id, Value(std::uint32_t{276}));
}
void tokenZero(Config& target) {
  target.set(sd::SlotMo::kToken.id, Value(base::String("0")));
}
void unknownZone(Config& target) {
  target.set(comm::DateTimeMo::kTimeZone.id, Value(base::String("Nowhere/Nothing")));
}
void zoneOutsideTheFolder(Config& target) {
  target.set(comm::DateTimeMo::kTimeZone.id, Value(base::String("../zoneinfo/UTC")));
}

/// Takes the children of a class away.
template <std::uint32_t kClass>
void drop(Config& target) {
  zan_serviceOrchAG::dropChildren(target, kClass);
}

/// Sets or unsets a property of the children of a class.
template <std::uint32_t kClass, auto kProperty, auto kValue>
void setOf(Config& target) {
  changeChildren(target, kClass, [](Config& child) { child.set(kProperty->id, Value(kValue)); });
}
template <std::uint32_t kClass, auto kProperty>
void unsetOf(Config& target) {
  changeChildren(target, kClass, unset<kProperty>);
}

void installJob(Config& target) {
  target.set(sd::AppInstanceMo::kJobType.id, Value(std::uint8_t{1}));
}
void noAppAndInstallJob(Config& target) {
  drop<kApp>(target);
  installJob(target);
}
void noDeviceAndInstallJob(Config& target) {
  drop<kLdu>(target);
  installJob(target);
}
void noLinks(Config& target) {
  changeChildren(target, kLdu, dropChildren);
}
void keepClusterLinks(Config& target) {
  keepLinks(target, 2);
}
void noPortOfClusterLink(Config& target) {
  changeLinks(target, 2, unset<&sd::ExternalLduLinkMo::kPortName>);
}
void noPortOfManagementLink(Config& target) {
  changeLinks(target, 1, unset<&sd::ExternalLduLinkMo::kPortName>);
}
void keepDirectLinksWithoutCluster(Config& target) {
  keepLinks(target, 3);
  drop<kCluster>(target);
}

constexpr Refusal kRefusals[] = {
    {"install", "NoTarget", nothing, "INSTALLAPP:: AppInstanceMo is missing",
     "INSTALLAPP : cannot find AppInstanceMo"},
    {"install", "TargetOfAnotherClass", anotherClass, "INSTALLAPP:: AppInstanceMo is missing",
     "INSTALLAPP : cannot find AppInstanceMo"},
    {"install", "NoApp", dropChildren, "INSTALLAPP:: AppMo is missing",
     "INSTALLAPP : cannot find AppMo"},
    {"install", "NoAppAndAnotherJob", noAppAndAnotherJob, "INSTALLAPP:: AppMo is missing",
     "INSTALLAPP : cannot find AppMo"},
    {"install", "AnotherJob", anotherJob, "INSTALLAPP:: ServiceOrchAG: Job type is wrong.",
     nullptr},
    {"install", "NoPackage", packageEmpty, "INSTALLAPP:: packageFile is missing.",
     "INSTALLAPP: slot[3]: appInstanceId [a1]: packageFile : missing"},
    {"install", "IdZero", idZero, "INSTALLAPP:: appInstanceId is missing.",
     "INSTALLAPP: slot[3]: appInstanceId : missing"},
    {"install", "DiskZero", diskZero, "INSTALLAPP:: reqDataHdd is missing.",
     "INSTALLAPP: slot[3]: appInstanceId [a1]: reqDataHdd : missing"},
    {"install", "DiskWraps", diskThatWrapsToZero, "INSTALLAPP:: reqDataHdd is missing.",
     "INSTALLAPP: slot[3]: appInstanceId [a1]: reqDataHdd : missing"},
    {"install", "InstallTimeoutZero", installTimeoutZero, "INSTALLAPP:: installTimeout is missing.",
     "INSTALLAPP: slot[3]: appInstanceId [a1]: installTimeout : missing"},
    {"install", "UninstallTimeoutZero", uninstallTimeoutZero,
     "INSTALLAPP:: uninstallTimeout is missing.",
     "INSTALLAPP: slot[3]: appInstanceId[a1]: uninstallTimeout : missing"},
    {"upgrade", "NoTarget", nothing, "UPGRADEAPP:: AppInstanceMo is missing",
     "UPGRADEAPP : cannot find AppInstanceMo"},
    {"upgrade", "NoAppAndAnotherJob", noAppAndAnotherJob, "UPGRADEAPP:: AppMo is missing",
     "UPGRADEAPP : cannot find AppMo"},
    {"upgrade", "AnotherJob", anotherJob, "UPGRADEAPP:: Job type is wrong.", nullptr},
    {"upgrade", "IdEmpty", idEmpty, "UPGRADEAPP:: appInstanceId is missing",
     "UPGRADEAPP: slot[3]: appInstanceId : missing"},
    {"upgrade", "NoUrl", packageEmpty, "UPGRADEAPP:: url is missing",
     "UPGRADEAPP: slot[3]: appInstanceId [a1]: url : missing"},
    {"upgrade", "TimeoutZero", upgradeTimeoutZero, "UPGRADEAPP:: upgradeTimeout is missing",
     "UPGRADEAPP: slot[3]: appInstanceId [a1]: upgradeTimeout : missing"},
    {"upgrade", "DiskZero", diskZero, "UPGRADEAPP:: reqDataHdd is missing",
     "UPGRADEAPP: slot[3]: appInstanceId[a1]: reqDataHdd : missing"},
    {"start", "NoTarget", nothing, "STARTAPP:: AppInstanceMo is missing",
     "STARTAPP : cannot find AppInstanceMo"},
    {"start", "TargetOfAnotherClass", anotherClass, "STARTAPP:: AppInstanceMo is missing",
     "STARTAPP : cannot find AppInstanceMo"},
    {"start", "NeitherDeviceNorApp", dropChildren, "STARTAPP:: LduMo is missing",
     "STARTAPP: cannot find LduMo"},
    {"start", "NoDeviceAndAnotherJob", noDeviceAndInstallJob, "STARTAPP:: LduMo is missing",
     "STARTAPP: cannot find LduMo"},
    {"start", "NoAppAndAnotherJob", noAppAndInstallJob, "STARTAPP:: AppMo is missing",
     "STARTAPP : cannot find AppMo"},
    {"start", "AnotherJob", installJob, "STARTAPP: Job type is wrong.", nullptr},
    {"start", "NoJob", unset<&sd::AppInstanceMo::kJobType>, "STARTAPP: Job type is wrong.",
     nullptr},
    {"start", "IdZero", idZero, "STARTAPP:: appInstanceId is missing.",
     "STARTAPP: slot[3]: appInstanceId : missing"},
    {"start", "NoId", unset<&sd::AppInstanceMo::kAppInstanceId>,
     "STARTAPP:: appInstanceId is missing.", "STARTAPP: slot[3]: appInstanceId : missing"},
    {"start", "NoResource", drop<kResource>, "STARTAPP:: reqCpuCores core is missing.",
     "STARTAPP: appInstanceId[a1]: slot[3]: reqCpuCores : missing"},
    {"start", "CoresZero", setOf<kResource, &sd::ResourceMo::kReqCpuCores, 0U>,
     "STARTAPP:: reqCpuCores core is missing.",
     "STARTAPP: appInstanceId[a1]: slot[3]: reqCpuCores : missing"},
    {"start", "RamZero", setOf<kResource, &sd::ResourceMo::kMaxAllowedRam, 0U>,
     "STARTAPP:: maxAllowedRam is missing.",
     "STARTAPP: appInstanceId[a1]: slot[3]: maxAllowedRam : missing"},
    {"start", "NoRam", unsetOf<kResource, &sd::ResourceMo::kMaxAllowedRam>,
     "STARTAPP:: maxAllowedRam is missing.",
     "STARTAPP: appInstanceId[a1]: slot[3]: maxAllowedRam : missing"},
    {"start", "DiskZero", setOf<kResource, &sd::ResourceMo::kReqDataHdd, 0U>,
     "STARTAPP:: reqDataHdd is missing.",
     "STARTAPP: appInstanceId[a1]: slot[3]: reqDataHdd : missing"},
    {"start", "NoLinks", noLinks, "STARTAPP:: reqDataVnics is missing.",
     "STARTAPP: appInstanceId[a1]: slot[3]: reqDataVnics : missing"},
    {"startVdp", "ClusterLinkWithoutPort", noPortOfClusterLink,
     "STARTAPP:: clusterBootstrap: Cluster portName is missing.", "STARTAPP: portName: missing"},
    {"start", "NoManagementLink", keepClusterLinks,
     "STARTAPP:: clusterMgmtBootstrap: Management portName is missing.",
     "STARTAPP: portName: missing"},
    {"startVdp", "NoManagementLink", keepClusterLinks,
     "STARTAPP:: clusterMgmtBootstrap: Management portName is missing.",
     "STARTAPP: portName: missing"},
    {"start", "ManagementLinkWithoutPort", noPortOfManagementLink,
     "STARTAPP:: clusterMgmtBootstrap: Management portName is missing.",
     "STARTAPP: portName: missing"},
    {"start", "NeitherClusterNorManagementLink", keepDirectLinksWithoutCluster,
     "STARTAPP:: mgmtBootstrap: portName is missing.", "STARTAPP: portName: missing"},
    {"start", "UnknownDeployType", setOf<kApp, &sm::AppMo::kDeployType, std::uint8_t{4}>,
     "STARTAPP:: interfaceList deploy type is unknown.",
     "STARTAPP: appInstanceId[a1]: slot[3]: interfaceList: type = unknown"},
    {"startVdp", "NoDeployType", unsetOf<kApp, &sm::AppMo::kDeployType>,
     "STARTAPP:: interfaceList deploy type is unknown.",
     "STARTAPP: appInstanceId[a1]: slot[3]: interfaceList: type = unknown"},
    {"start", "NoBootstrapVersion", unset<&sd::AppInstanceMo::kMgmtBootstrapVersion>,
     "STARTAPP:: mgmtBootstrapVersion is missing.",
     "STARTAPP: appInstanceId[a1]: slot[3]: mgmtBootstrapVersion : missing"},
    {"start", "NoChassis", drop<kChassis>, "STARTAPP:: chassis serial number is missing.",
     "STARTAPP: chassis: missing for appInstanceId[a1]."},
    {"start", "ChassisWithoutSerial", unsetOf<kChassis, &sd::ChassisMo::kSerial>,
     "STARTAPP:: chassis serial number is missing.",
     "STARTAPP: chassis: missing for appInstanceId[a1]."},
    {"start", "NoBlade", drop<kBlade>, "STARTAPP:: blade serial number is missing.",
     "STARTAPP: blade: missing for appInstanceId[a1]."},
    {"start", "BladeWithoutSerial", unsetOf<kBlade, &sd::BladeMo::kSerial>,
     "STARTAPP:: blade serial number is missing.",
     "STARTAPP: blade: missing for appInstanceId[a1]."},
    {"start", "SlotZero", unset<&sd::AppInstanceMo::kSlotId>, "STARTAPP:: slot id is missing.",
     "STARTAPP: slot: missing for appInstanceId[a1]."},
    {"stop", "NoTarget", nothing, "STOPAPP:: AppInstanceMo is missing",
     "STOPAPP : cannot find AppInstanceMo"},
    {"stop", "AnotherJob", anotherJob, "STOPAPP:: Job type is wrong.", nullptr},
    {"stop", "IdColons", idColons, "STOPAPP:: appInstanceId is missing",
     "STOPAPP: slot[3]: appInstanceId : missing"},
    {"uninstall", "NoTarget", nothing, "UNINSTALLAPP:: AppInstanceMo is missing",
     "UNINSTALLAPP : cannot find AppInstanceMo"},
    {"uninstall", "AnotherJob", anotherJob, "UNINSTALLAPP:: Job type is wrong.", nullptr},
    {"uninstall", "IdZero", idZero, "UNINSTALLAPP:: appInstanceId is missing",
     "UNINSTALLAPP: slot[3]: appInstanceId : missing"},
    {"platformLogLevel", "NoTarget", nothing, "PLATFORMLOGLEVELSET:: slotMo is missing",
     "PLATFORMLOGLEVELSET : cannot find slotMo"},
    {"platformLogLevel", "AnotherCommand", anotherCommand,
     "PLATFORMLOGLEVELSET:: Change platform log command is wrong.", nullptr},
    {"formatDisk", "NoTarget", anotherClass, "FORMATDISK:: SlotMo is missing",
     "FORMATDISK: cannot find SlotMo"},
    {"formatDisk", "TokenZero", tokenZero, "FORMATDISK:: token is missing",
     "FORMATDISK: slot[3] : token : missing"},
    {"formatDisk", "NoToken", unset<&sd::SlotMo::kToken>, "FORMATDISK:: token is missing",
     "FORMATDISK: slot[3] : token : missing"},
    {"timeZone", "NoTarget", nothing, "STARTAPP:: DateTimeMo is missing",
     "SETTINGUPDATE: cannot find DateTimeMo"},
    {"timeZone", "UnknownZone", unknownZone, "SETTINGUPDATE:: timezone is missing",
     "SETTINGUPDATE: slot[3]: timezone : missing"},
    {"timeZone", "ZoneOutsideTheFolder", zoneOutsideTheFolder,
     "SETTINGUPDATE:: timezone is missing", "SETTINGUPDATE: slot[3]: timezone : missing"},
};

void PrintTo(const Refusal& refusal, std::ostream* out) {
  *out << refusal.executor << ' ' << refusal.what;
}

class RefusedStage : public testing::TestWithParam<Refusal> {};
INSTANTIATE_TEST_SUITE_P(Executors, RefusedStage, testing::ValuesIn(kRefusals),
                         [](const auto& each) {
                           return std::string(each.param.executor) + '_' + each.param.what;
                         });

TEST_P(RefusedStage, ReportsItsTextAndSendsNothing) {
  const Executor& executor = executorNamed(GetParam().executor);
  Config target = executor.target();
  GetParam().change(target);
  const ScriptedBlades blades;
  const LogCapture log(8);
  const Outcome outcome = runExecutor(executor, target);
  ASSERT_TRUE(outcome.hasFailed);
  EXPECT_EQ(outcome.failure.bits, 1U);
  EXPECT_EQ(outcome.failure.code, 1003U);
  EXPECT_EQ(outcome.failure.text, GetParam().failure);
  EXPECT_TRUE(outcome.isAnswered);
  EXPECT_TRUE(blades.sent().empty());
  const std::vector<LogLine> expected =
      GetParam().line == nullptr ? std::vector<LogLine>{}
                                 : std::vector<LogLine>{{8, executor.function, GetParam().line}};
  EXPECT_EQ(log.lines(), expected);
}

// ----- The lines of a run, and what a failed send reports -------------------------------------

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

// ----- Values ----------------------------------------------------------------------------------

TEST(Install, DeployTypes_HaveTheirTexts) {
  const std::vector<std::pair<std::uint8_t, std::string>> rows{
      {0, "unknown"}, {1, "native"}, {2, "lxc"}, {3, "vm"}, {4, "unknown"}, {7, "unknown"}};
  for (const auto& [value, text] : rows) {
    Config target = executorNamed("install").target();
    setOfApp<&sm::AppMo::kDeployType>(target, std::uint8_t{value});
    EXPECT_NE(sentDocument("install", target).find("<installType>" + text + "</installType>"),
              std::string::npos);
  }
}

TEST(Install, TwoApplications_TheFirstCounts) {
  Config target = executorNamed("install").target();
  Config second(0x306, mo::Dn("sys/other"));
  second.set(sm::AppMo::kPackageFile.id, Value(base::String("/pkg/second.bin")));
  target.addChild(second);
  EXPECT_EQ(sentDocument("install", target), golden("install.xml"));
}

TEST(Install, HostileValues_StayText) {
  Config target = executorNamed("install").target();
  setOfApp<&sm::AppMo::kPackageFile>(target, base::String("</packageFile><evil a=\"1\">&"));
  EXPECT_NE(sentDocument("install", target)
                .find("<packageFile>&lt;/packageFile&gt;&lt;evil a=\"1\"&gt;&amp;</packageFile>"),
            std::string::npos);
}

TEST(PlatformLogLevel, Levels_HaveTheirTexts) {
  const std::vector<std::pair<std::uint8_t, std::string>> rows{
      {0, "debug"},    {1, "info"},  {2, "warning"}, {3, "error"},
      {4, "critical"}, {5, "debug"}, {9, "debug"},   {255, "debug"}};
  for (const auto& [value, text] : rows) {
    Config target = executorNamed("platformLogLevel").target();
    target.set(sd::SlotMo::kPlatformLogLevel.id, Value(std::uint8_t{value}));
    EXPECT_EQ(sentDocument("platformLogLevel", target),
              "<platformLogLevelSetRequest><logLevel>" + text +
                  "</logLevel></platformLogLevelSetRequest>");
  }
}

TEST(TimeZone, Zones_AreCutAtTheFirstBlank) {
  const std::vector<std::pair<const char*, std::string>> rows{
      {"Europe/Berlin", "CET-1CEST,M3.5.0,M10.5.0/3"},
      {"", "UTC0"},
      {" Europe/Berlin", "UTC0"},
      {"UTC", "UTC0"},
      {"Asia/Kolkata x y", "IST-5:30"}};
  for (const auto& [zone, posix] : rows) {
    Config target = executorNamed("timeZone").target();
    target.set(comm::DateTimeMo::kTimeZone.id, Value(base::String(zone)));
    EXPECT_NE(sentDocument("timeZone", target).find("<timezone>" + posix + "</timezone>"),
              std::string::npos)
        << zone;
  }
}

TEST(TimeZone, NoLogLevel_IsRefused) {
  const ScriptedBlades blades;
  const LogCapture log(8);
  serviceorchapi::UpdateTimeZoneMe me;
  std::get<Config>(me.in) = executorNamed("timeZone").target();
  Svc::executeServiceorchapiUpdateTimeZoneCb(me, 0, 0, mo::Dn(), 0, Config(), 7, "");
  ASSERT_NE(me.failure(), nullptr);
  EXPECT_EQ(me.failure()->text, "SETTINGUPDATE:: logLevel is missing");
  EXPECT_TRUE(log.contains(8, "SETTINGUPDATE: slot[7]: logLevel : missing"));
  EXPECT_TRUE(blades.sent().empty());
}

TEST(ClearApplicationLogData, EmptyIdOrZero_SendsWhatClearsTheSystemsLogs) {
  for (const char* id : {"", "0"}) {
    const ScriptedBlades blades;
    serviceorchapi::ClearApplicationLogDataMe me;
    Svc::executeServiceorchapiClearApplicationLogDataCb(me, id, 3);
    EXPECT_EQ(me.failure(), nullptr);
    EXPECT_EQ(blades.sent(),
              (std::vector<SentCommand>{{"3", golden("clearSystemLogData.xml"), "clearLogData"}}));
  }
}

TEST(CreateChildNode, ValuesThatCountAsNotSet_AddNothing) {
  CommandDocument document("r");
  for (const char* value : {"", "0", "::"}) {
    EXPECT_EQ(createChildNode("e", value, document.root(), document.converter()), nullptr);
  }
  EXPECT_EQ(document.text(), "<r/>");
  for (const char* value : {"00", " ", "0.0.0.0", ":", "::1"}) {
    EXPECT_NE(createChildNode("e", value, document.root(), document.converter()), nullptr) << value;
  }
}

}  // namespace
}  // namespace zan_serviceOrchAG
