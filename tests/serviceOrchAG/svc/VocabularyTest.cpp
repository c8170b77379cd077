#include "serviceOrchAG/svc/Vocabulary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "framework/base/SvcConfigParams.h"

namespace zan_serviceOrchAG {
namespace {

std::string useBothSets() {
  const auto loaded = base::SvcConfigParams::getInstance().loadText(
      "supervisor.state_dir = \"/var/lib/zedd\"\n"
      "address.app_ag = \"127.128.3.1:5556\"\n"
      "address.app_ag_heartbeat = \"127.128.3.1:5559\"\n");
  return (loaded ? words().channelName : loaded.error()) + " " + names().hotfixes.str();
}

// Built before main(), in whatever order the linker chose. The second address keeps its default.
const std::string kReadBeforeMain = useBothSets();

std::vector<std::string> texts(const std::deque<std::string>& values) {
  return {values.begin(), values.end()};
}

std::vector<std::string> texts(const std::deque<base::String>& values) {
  std::vector<std::string> result;
  for (const base::String& value : values) {
    result.push_back(value.str());
  }
  return result;
}

TEST(Words, InDefinitionOrder_AreTheFortyProtocolWords) {
  const std::vector<std::string> expected = {"ZEDServiceOrchAGChannel",
                                             "tcp://127.0.0.1:5557",
                                             "tcp://127.0.0.1:6557",
                                             "inproc://worker-end-point",
                                             "nox-xml",
                                             "1",
                                             "Request failed",
                                             "get",
                                             "set",
                                             "update",
                                             "register",
                                             "commandProgress.update",
                                             "heartbeat",
                                             "appFailure",
                                             "platformInfo.update",
                                             "register",
                                             "commandProgressUpdate",
                                             "heartbeat",
                                             "appFailure",
                                             "platformInfoUpdate",
                                             "platformSettingsUpdate",
                                             "appStatusGet",
                                             "platformLogLevelSet",
                                             "clearLogData",
                                             "installApp",
                                             "startApp",
                                             "stopApp",
                                             "uninstallApp",
                                             "upgradeApp",
                                             "appStatus.get",
                                             "commandProgress.get",
                                             "platformLogLevel.set",
                                             "clearLogData",
                                             "formatDisk",
                                             "uploadPlatformImage",
                                             "settings.update",
                                             "succeeded",
                                             "running",
                                             "failed",
                                             "stopped"};
  EXPECT_EQ(texts(words().inDefinitionOrder()), expected);
  EXPECT_EQ(words().inDefinitionOrder().size(), 40U);
}

TEST(Words, WordsWithTwoRoles_AreSeparateConstants) {
  const std::vector<std::string> all = texts(words().inDefinitionOrder());
  EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), 36U);
  EXPECT_NE(&words().registerKey, &words().registerName);
  EXPECT_NE(&words().heartbeatKey, &words().heartbeatName);
  EXPECT_NE(&words().appFailureKey, &words().appFailureName);
  EXPECT_NE(&words().clearLogDataName, &words().clearLogDataSubject);
}

TEST(Words, EveryMember_HoldsItsWord) {
  EXPECT_EQ(words().leftServerEndPoint, "tcp://127.0.0.1:5557");
  EXPECT_EQ(words().rightServerEndPoint, "tcp://127.0.0.1:6557");
  EXPECT_EQ(words().commandProgressUpdateKey, "commandProgress.update");
  EXPECT_EQ(words().commandProgressUpdateName, "commandProgressUpdate");
  EXPECT_EQ(words().platformInfoUpdateKey, "platformInfo.update");
  EXPECT_EQ(words().platformInfoUpdateName, "platformInfoUpdate");
  EXPECT_EQ(words().settingsUpdateSubject, "settings.update");
  EXPECT_EQ(words().platformSettingsUpdateName, "platformSettingsUpdate");
  EXPECT_EQ(words().stateStopped, "stopped");
}

TEST(Names, InDefinitionOrder_AreTheHundredAndTwentyFourNames) {
  const std::vector<std::string> expected = {"appInstanceId",
                                             "appAGIPPort",
                                             "127.128.3.1:5556",
                                             "/tmp/appAG",
                                             "127.128.1.254:5556",
                                             "appAGHeartbeatIPPort",
                                             "127.128.3.1:5559",
                                             "/tmp/appAGHB",
                                             "allocatedVNIC",
                                             "bladeVNIC",
                                             "clusterMgmtIPv6Gateway",
                                             "clusterMgmtIPv6PrefixLength",
                                             "clusterMgmtIPv6VirtIP",
                                             "clusterMgmtIPv6PoolEnd",
                                             "clusterMgmtIPv6PoolStart",
                                             "clusterMgmtIPv4Gateway",
                                             "clusterMgmtIPv4Netmask",
                                             "clusterMgmtIPv4VirtIP",
                                             "clusterMgmtIPv4PoolEnd",
                                             "clusterMgmtIPv4PoolStart",
                                             "clusterMgmtBootstrap",
                                             "lxc",
                                             "native",
                                             "vm",
                                             "unknown",
                                             "hdrVersion",
                                             "interfaceDetails",
                                             "installTimeout",
                                             "installType",
                                             "interface",
                                             "interfaceList",
                                             "interfaceType",
                                             "mgmtBootstrap",
                                             "logLevel",
                                             "critical",
                                             "error",
                                             "warning",
                                             "info",
                                             "debug",
                                             "maxAllowedRam",
                                             "mgmtIPv6Gateway",
                                             "mgmtIPv6PrefixLength",
                                             "mgmtIPv6",
                                             "mgmtIPv4Gateway",
                                             "mgmtIPv4Netmask",
                                             "mgmtIPv4",
                                             "mgmtSubType",
                                             "macAddress",
                                             "mgmtBootstrapVersion",
                                             "netMgmtBootstrapList",
                                             "netMgmtBootstrap",
                                             "packageFile",
                                             "portName",
                                             "reqDataHdd",
                                             "reqSecDataHdd",
                                             "reqDataVnics",
                                             "reqCpuCores",
                                             "slot",
                                             "uninstallTimeout",
                                             "upgradeTimeout",
                                             "url",
                                             "vlan",
                                             "force",
                                             "timezone",
                                             "interfaceDriver",
                                             "queues",
                                             "CurrentSnapshot",
                                             "chassis",
                                             "blade",
                                             "internal_mgmt",
                                             "clusterBootstrap",
                                             "IPv4",
                                             "IPv4Netmask",
                                             "osVersion",
                                             "OsVersion",
                                             "Cpu",
                                             "TotalLoadAvg",
                                             "Memory",
                                             "MemTotalKB",
                                             "MemFreeKB",
                                             "MemUsedKB",
                                             "DiskFilesystem",
                                             "DiskName",
                                             "DiskTotalKB",
                                             "DiskFreeKB",
                                             "DiskUsedKB",
                                             "DiskMountPoint",
                                             "application",
                                             "adminStatus",
                                             "installedVersion",
                                             "bladeSlotId",
                                             "port",
                                             "ip",
                                             "token",
                                             "operStatus",
                                             "operCmd",
                                             "operProgress",
                                             "Sysuptime",
                                             "count",
                                             "timer",
                                             "code",
                                             "ack",
                                             "enable",
                                             "disable",
                                             "authorizedPubKey",
                                             "imagePath",
                                             "checksum",
                                             "zedPubKey",
                                             "currentPlatformImage",
                                             "size",
                                             "minus1",
                                             "minus5",
                                             "minus15",
                                             "Disk",
                                             "runningPlatformImage",
                                             "imageName",
                                             "errorDesc",
                                             "/etc/ssh/ssh_host_rsa_key.pub",
                                             "bladeCurrTime",
                                             "upTime",
                                             "cachePlatformImage",
                                             "AppsMemory",
                                             "hotfixes",
                                             "externalSoftwareManagement"};
  EXPECT_EQ(texts(names().inDefinitionOrder()), expected);
  EXPECT_EQ(names().inDefinitionOrder().size(), 124U);
}

TEST(Names, NamesThatDifferInCase_AreDifferent) {
  EXPECT_EQ(names().osVersion, base::String("osVersion"));
  EXPECT_EQ(names().platformOsVersion, base::String("OsVersion"));
  EXPECT_NE(names().osVersion, names().platformOsVersion);
}

TEST(Names, Addresses_HaveTheFixedPorts) {
  EXPECT_TRUE(names().appAGAddress.str().ends_with(":5556"));
  EXPECT_TRUE(names().appAGSecondAddress.str().ends_with(":5556"));
  EXPECT_TRUE(names().appAGHeartbeatAddress.str().ends_with(":5559"));
  EXPECT_NE(names().appAGAddress, names().appAGSecondAddress);
}

TEST(Vocabulary, UsedBeforeMain_IsComplete) {
  EXPECT_EQ(kReadBeforeMain, "ZEDServiceOrchAGChannel hotfixes");
}

}  // namespace
}  // namespace zan_serviceOrchAG
