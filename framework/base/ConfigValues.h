#pragma once

#include <cstdint>
#include <string>

namespace base {

// One whole configuration, with the values that hold where it says nothing. What each means and
// which values it may take stands in the table of ConfigKeys.cpp.
struct ConfigValues {
  std::int64_t selfId = 1;
  std::string clusterName = "chassis";
  std::string platform = "standard";
  std::string stateDir;
  std::string hostKey = "/etc/ssh/ssh_host_rsa_key.pub";

  std::int64_t logLevel = 5;
  std::string logFile;

  std::string serviceLibrary = "libserviceOrchAG.so";

  std::string dmeEndpoint = "inproc://dme";
  std::string dmeChassis;
  std::int64_t dmeHeartbeatInterval = 5;
  std::int64_t dmeHeartbeatMisses = 3;
  std::int64_t dmeGrace = 30;
  std::int64_t dmeSettleAfter = 30;

  std::int64_t messageMaxBytes = 1048576;
  std::int64_t messageMaxParts = 16;
  std::int64_t messageReceiveHwm = 1000;
  std::int64_t messageMaxHandshakes = 1024;
  std::int64_t messageHandshakeMs = 2000;
  std::int64_t messageHeartbeatMs = 10000;

  std::int64_t xmlMaxDepth = 64;
  std::int64_t xmlMaxElements = 16384;
  std::int64_t xmlMaxBytes = 1048576;

  std::string tftpAddress = "127.128.254.1";
  std::string appAgAddress = "127.128.254.1:5556";
  std::string appAgSecondAddress = "127.128.1.254:5556";
  std::string appAgHeartbeatAddress = "127.128.254.1:5559";
};

}  // namespace base
