#pragma once

#include <deque>
#include <string>
#include <string_view>

#include "framework/base/String.h"

// What the gateway and the blades' agents agree on, spelled once: protocol words and the names of
// elements, keys and values. Everything is compared exactly and case-sensitively.
//
// Both sets are built on first use, from any thread and also before main(), and are never freed:
// request workers run until the process ends and use them to the last.

namespace zan_serviceOrchAG {

/// Texts at fixed addresses, kept in the order in which the members of a derived class name them.
template <class Text>
class DefinitionOrder {
 public:
  DefinitionOrder(const DefinitionOrder&) = delete;
  DefinitionOrder& operator=(const DefinitionOrder&) = delete;

  const std::deque<Text>& inDefinitionOrder() const { return texts_; }

 protected:
  DefinitionOrder() = default;
  ~DefinitionOrder() = default;
  const Text& add(std::string_view text) { return texts_.emplace_back(text); }

 private:
  std::deque<Text> texts_;
};

/// Protocol words: compared with message parts and used as map keys. A word with two roles is two
/// constants.
class Words : public DefinitionOrder<std::string> {
 public:
  // Channel.
  const std::string& channelName = add("ZEDServiceOrchAGChannel");
  const std::string& leftServerEndPoint = add("tcp://127.0.0.1:5557");
  const std::string& rightServerEndPoint = add("tcp://127.0.0.1:6557");
  const std::string& workerEndPoint = add("inproc://worker-end-point");

  // Envelope.
  const std::string& contentType = add("nox-xml");
  const std::string& contentVersion = add("1");

  // Text.
  const std::string& requestFailedText = add("Request failed");

  // Action segments.
  const std::string& actionGet = add("get");
  const std::string& actionSet = add("set");
  const std::string& actionUpdate = add("update");

  // Dispatch keys of the requests that blades send.
  const std::string& registerKey = add("register");
  const std::string& commandProgressUpdateKey = add("commandProgress.update");
  const std::string& heartbeatKey = add("heartbeat");
  const std::string& appFailureKey = add("appFailure");
  const std::string& platformInfoUpdateKey = add("platformInfo.update");

  // Command names in the reply documents.
  const std::string& registerName = add("register");
  const std::string& commandProgressUpdateName = add("commandProgressUpdate");
  const std::string& heartbeatName = add("heartbeat");
  const std::string& appFailureName = add("appFailure");
  const std::string& platformInfoUpdateName = add("platformInfoUpdate");

  // Command names in the documents that are sent to blades.
  const std::string& platformSettingsUpdateName = add("platformSettingsUpdate");
  const std::string& appStatusGetName = add("appStatusGet");
  const std::string& platformLogLevelSetName = add("platformLogLevelSet");
  const std::string& clearLogDataName = add("clearLogData");
  const std::string& installAppName = add("installApp");
  const std::string& startAppName = add("startApp");
  const std::string& stopAppName = add("stopApp");
  const std::string& uninstallAppName = add("uninstallApp");
  const std::string& upgradeAppName = add("upgradeApp");

  // Subjects of the commands that are sent to blades.
  const std::string& appStatusGetSubject = add("appStatus.get");
  const std::string& commandProgressGetSubject = add("commandProgress.get");
  const std::string& platformLogLevelSetSubject = add("platformLogLevel.set");
  const std::string& clearLogDataSubject = add("clearLogData");
  const std::string& formatDiskSubject = add("formatDisk");
  const std::string& uploadPlatformImageSubject = add("uploadPlatformImage");
  const std::string& settingsUpdateSubject = add("settings.update");

  // States of an operation.
  const std::string& stateSucceeded = add("succeeded");
  const std::string& stateRunning = add("running");
  const std::string& stateFailed = add("failed");
  const std::string& stateStopped = add("stopped");

 private:
  friend const Words& words();
  Words();
};

/// Names of elements and keys, and values, of the documents and of the objects' properties.
class Names : public DefinitionOrder<base::String> {
 public:
  const base::String& appInstanceId = add("appInstanceId");
  const base::String& appAGIPPort = add("appAGIPPort");
  const base::String& appAGAddress = add(configuredAddress());
  const base::String& appAGPath = add("/tmp/appAG");
  const base::String& appAGSecondAddress = add(configuredSecondAddress());
  const base::String& appAGHeartbeatIPPort = add("appAGHeartbeatIPPort");
  const base::String& appAGHeartbeatAddress = add(configuredHeartbeatAddress());
  const base::String& appAGHeartbeatPath = add("/tmp/appAGHB");
  const base::String& allocatedVNIC = add("allocatedVNIC");
  const base::String& bladeVNIC = add("bladeVNIC");
  const base::String& clusterMgmtIPv6Gateway = add("clusterMgmtIPv6Gateway");
  const base::String& clusterMgmtIPv6PrefixLength = add("clusterMgmtIPv6PrefixLength");
  const base::String& clusterMgmtIPv6VirtIP = add("clusterMgmtIPv6VirtIP");
  const base::String& clusterMgmtIPv6PoolEnd = add("clusterMgmtIPv6PoolEnd");
  const base::String& clusterMgmtIPv6PoolStart = add("clusterMgmtIPv6PoolStart");
  const base::String& clusterMgmtIPv4Gateway = add("clusterMgmtIPv4Gateway");
  const base::String& clusterMgmtIPv4Netmask = add("clusterMgmtIPv4Netmask");
  const base::String& clusterMgmtIPv4VirtIP = add("clusterMgmtIPv4VirtIP");
  const base::String& clusterMgmtIPv4PoolEnd = add("clusterMgmtIPv4PoolEnd");
  const base::String& clusterMgmtIPv4PoolStart = add("clusterMgmtIPv4PoolStart");
  const base::String& clusterMgmtBootstrap = add("clusterMgmtBootstrap");
  const base::String& lxc = add("lxc");
  const base::String& native = add("native");
  const base::String& vm = add("vm");
  const base::String& unknown = add("unknown");
  const base::String& hdrVersion = add("hdrVersion");
  const base::String& interfaceDetails = add("interfaceDetails");
  const base::String& installTimeout = add("installTimeout");
  const base::String& installType = add("installType");
  const base::String& interface = add("interface");
  const base::String& interfaceList = add("interfaceList");
  const base::String& interfaceType = add("interfaceType");
  const base::String& mgmtBootstrap = add("mgmtBootstrap");
  const base::String& logLevel = add("logLevel");
  const base::String& critical = add("critical");
  const base::String& error = add("error");
  const base::String& warning = add("warning");
  const base::String& info = add("info");
  const base::String& debug = add("debug");
  const base::String& maxAllowedRam = add("maxAllowedRam");
  const base::String& mgmtIPv6Gateway = add("mgmtIPv6Gateway");
  const base::String& mgmtIPv6PrefixLength = add("mgmtIPv6PrefixLength");
  const base::String& mgmtIPv6 = add("mgmtIPv6");
  const base::String& mgmtIPv4Gateway = add("mgmtIPv4Gateway");
  const base::String& mgmtIPv4Netmask = add("mgmtIPv4Netmask");
  const base::String& mgmtIPv4 = add("mgmtIPv4");
  const base::String& mgmtSubType = add("mgmtSubType");
  const base::String& macAddress = add("macAddress");
  const base::String& mgmtBootstrapVersion = add("mgmtBootstrapVersion");
  const base::String& netMgmtBootstrapList = add("netMgmtBootstrapList");
  const base::String& netMgmtBootstrap = add("netMgmtBootstrap");
  const base::String& packageFile = add("packageFile");
  const base::String& portName = add("portName");
  const base::String& reqDataHdd = add("reqDataHdd");
  const base::String& reqSecDataHdd = add("reqSecDataHdd");
  const base::String& reqDataVnics = add("reqDataVnics");
  const base::String& reqCpuCores = add("reqCpuCores");
  const base::String& slot = add("slot");
  const base::String& uninstallTimeout = add("uninstallTimeout");
  const base::String& upgradeTimeout = add("upgradeTimeout");
  const base::String& url = add("url");
  const base::String& vlan = add("vlan");
  const base::String& force = add("force");
  const base::String& timezone = add("timezone");
  const base::String& interfaceDriver = add("interfaceDriver");
  const base::String& queues = add("queues");
  const base::String& currentSnapshot = add("CurrentSnapshot");
  const base::String& chassis = add("chassis");
  const base::String& blade = add("blade");
  const base::String& internalMgmt = add("internal_mgmt");
  const base::String& clusterBootstrap = add("clusterBootstrap");
  const base::String& ipv4 = add("IPv4");
  const base::String& ipv4Netmask = add("IPv4Netmask");
  const base::String& osVersion = add("osVersion");
  const base::String& platformOsVersion = add("OsVersion");
  const base::String& cpu = add("Cpu");
  const base::String& totalLoadAvg = add("TotalLoadAvg");
  const base::String& memory = add("Memory");
  const base::String& memTotalKB = add("MemTotalKB");
  const base::String& memFreeKB = add("MemFreeKB");
  const base::String& memUsedKB = add("MemUsedKB");
  const base::String& diskFilesystem = add("DiskFilesystem");
  const base::String& diskName = add("DiskName");
  const base::String& diskTotalKB = add("DiskTotalKB");
  const base::String& diskFreeKB = add("DiskFreeKB");
  const base::String& diskUsedKB = add("DiskUsedKB");
  const base::String& diskMountPoint = add("DiskMountPoint");
  const base::String& application = add("application");
  const base::String& adminStatus = add("adminStatus");
  const base::String& installedVersion = add("installedVersion");
  const base::String& bladeSlotId = add("bladeSlotId");
  const base::String& port = add("port");
  const base::String& ip = add("ip");
  const base::String& token = add("token");
  const base::String& operStatus = add("operStatus");
  const base::String& operCmd = add("operCmd");
  const base::String& operProgress = add("operProgress");
  const base::String& sysuptime = add("Sysuptime");
  const base::String& count = add("count");
  const base::String& timer = add("timer");
  const base::String& code = add("code");
  const base::String& ack = add("ack");
  const base::String& enable = add("enable");
  const base::String& disable = add("disable");
  const base::String& authorizedPubKey = add("authorizedPubKey");
  const base::String& imagePath = add("imagePath");
  const base::String& checksum = add("checksum");
  const base::String& zedPubKey = add("zedPubKey");
  const base::String& currentPlatformImage = add("currentPlatformImage");
  const base::String& size = add("size");
  const base::String& minus1 = add("minus1");
  const base::String& minus5 = add("minus5");
  const base::String& minus15 = add("minus15");
  const base::String& disk = add("Disk");
  const base::String& runningPlatformImage = add("runningPlatformImage");
  const base::String& imageName = add("imageName");
  const base::String& errorDesc = add("errorDesc");
  const base::String& sshHostKeyPath = add("/etc/ssh/ssh_host_rsa_key.pub");
  const base::String& bladeCurrTime = add("bladeCurrTime");
  const base::String& upTime = add("upTime");
  const base::String& cachePlatformImage = add("cachePlatformImage");
  const base::String& appsMemory = add("AppsMemory");
  const base::String& hotfixes = add("hotfixes");
  const base::String& externalSoftwareManagement = add("externalSoftwareManagement");

 private:
  friend const Names& names();
  Names();

  // Where blades reach the gateway on the chassis' internal network, "address:port". Read from the
  // configuration once, so names() is first called after the configuration has been loaded.
  static std::string configuredAddress();
  static std::string configuredSecondAddress();
  static std::string configuredHeartbeatAddress();
};

const Words& words();
const Names& names();

}  // namespace zan_serviceOrchAG
