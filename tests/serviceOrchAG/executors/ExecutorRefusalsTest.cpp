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
#include "model/sm/AppMo.h"
#include "tests/serviceOrchAG/executors/ExecutorHarness.h"
#include "tests/serviceOrchAG/executors/StartTarget.h"
#include "tests/support/LogCapture.h"

namespace zan_serviceOrchAG {
namespace {

using method::Config;
using method::Value;
using test_support::LogCapture;
using test_support::LogLine;

// What executors refuse before anything is sent.

struct Refusal {
  const char* executor;
  const char* what;
  void (*change)(Config& target);
  const char* failure;
  const char* line;  // of level 8; null when there is none
};

template <auto kProperty>
void unset(Config& target) {
  target.set(kProperty->id, Value());
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
  changeChildren(target, kLdu, [](Config& ldu) { dropChildren(ldu); });
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

// Each stage serves the jobs of its own kind alone.
TEST(JobOfAnotherKind, IsRefused) {
  const struct {
    const char* executor;
    int job;
    const char* failure;
  } rows[] = {
      {"install", 1, "INSTALLAPP:: ServiceOrchAG: Job type is wrong."},
      {"uninstall", 2, "UNINSTALLAPP:: Job type is wrong."},
      {"upgrade", 3, "UPGRADEAPP:: Job type is wrong."},
      {"start", 4, "STARTAPP: Job type is wrong."},
      {"stop", 5, "STOPAPP:: Job type is wrong."},
  };
  for (const auto& row : rows) {
    const Executor& executor = executorNamed(row.executor);
    for (int job = 0; job < 256; ++job) {
      Config target = executor.target();
      target.set(sd::AppInstanceMo::kJobType.id, Value(static_cast<std::uint8_t>(job)));
      const ScriptedBlades blades;
      const Outcome outcome = runExecutor(executor, target);
      EXPECT_EQ(blades.sent().size(), job == row.job ? 1u : 0u) << row.executor << ' ' << job;
      EXPECT_EQ(outcome.failure.text, job == row.job ? "" : row.failure) << row.executor << job;
    }
  }
}

}  // namespace
}  // namespace zan_serviceOrchAG
