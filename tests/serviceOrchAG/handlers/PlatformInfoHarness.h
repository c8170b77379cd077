#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "framework/base/Buffer.h"
#include "framework/method/Config.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "tests/support/InstalledMsgHandler.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingSvc.h"

namespace zan_serviceOrchAG::platform_info_test {

using method::Config;
using method::Value;
using serviceorchapi::UpdatePlatformInfoMe;
using serviceorchapi::ValidateAppInstancesMe;
using test_support::LogLine;
using test_support::RecordingSvc;

/// Property identifiers and values, as the engine gets them.
using Values = std::vector<std::pair<std::uint32_t, Value>>;

inline Value text(const char* value) {
  return base::String(value);
}
inline Value number(std::uint32_t value) {
  return value;
}
inline Value count(std::int32_t value) {
  return value;
}
inline Value load(float value) {
  return value;
}
inline Value state(std::uint8_t value) {
  return value;
}

// The pieces of a report in which nothing is missing.
inline const std::string kTop = "<OsVersion>2.4.1</OsVersion><Sysuptime>12 days</Sysuptime>";
inline const std::string kCpu =
    "<Cpu><minus1>0.25</minus1><minus5>1.5</minus5><minus15>2</minus15></Cpu>";
inline const std::string kMemory =
    "<Memory><minus1><MemTotalKB>8192</MemTotalKB><MemFreeKB>4096</MemFreeKB>"
    "<MemUsedKB>2048</MemUsedKB></minus1></Memory>";
inline const std::string kAppsMemory =
    "<AppsMemory><CurrentSnapshot><MemTotalKB>1024</MemTotalKB></CurrentSnapshot></AppsMemory>";
inline const std::string kDisk =
    "<Disk><DiskName>sda1</DiskName><DiskTotalKB>3072</DiskTotalKB><DiskFreeKB>2048</DiskFreeKB>"
    "<DiskUsedKB>1024</DiskUsedKB><DiskMountPoint>/</DiskMountPoint></Disk>";
inline const std::string kApplication =
    "<application><appInstanceId>a1</appInstanceId><adminStatus>enable</adminStatus>"
    "<operStatus>running</operStatus>"
    "<externalSoftwareManagement>true</externalSoftwareManagement>"
    "<installedVersion>1.0</installedVersion><hotfixes>h1 h2</hotfixes></application>";

inline std::string disksOf(const std::string& disks) {
  return "<DiskFilesystem><minus1>" + disks + "</minus1></DiskFilesystem>";
}

inline std::string reportOf(const std::string& content) {
  return "<platformInfoUpdateRequest>" + content + "</platformInfoUpdateRequest>";
}

inline const std::string kFull =
    reportOf(kTop + kCpu + kMemory + kAppsMemory + disksOf(kDisk) + kApplication);

/// What the engine gets of the full report's monitor, without some of its values.
Values monitorWithout(const std::vector<std::uint32_t>& left);

Values valuesOf(const Config& config);

class PlatformInfo : public testing::Test {
 protected:
  PlatformInfo() { answer(true); }

  /// The engine's answer arrives, or its refusal.
  static void signal(const base::Buffer& cookie, bool isTaken);

  /// The engine answers every update from now on like this, at once.
  void answer(bool isTaken);
  void neverAnswer();

  std::unique_ptr<Response> handle(const std::string& document, int slot = 3,
                                   const std::string& messageId = "id-1");

  static void expectReply(const std::unique_ptr<Response>& response, unsigned code,
                          const std::string& message);

  /// The report's monitor, disks and application instances, as the engine gets them.
  struct Report {
    Config monitor;
    std::vector<Config> disks;
    std::vector<Config> appInstances;
  };

  /// Handles a report, which is answered with OK, and returns what the engine got of it.
  Report reported(const std::string& document);

  /// The lines about the document, which come before the first call is announced.
  std::vector<LogLine> complaints() const;

  RecordingSvc svc_;
  test_support::LogCapture log_;
  MsgHandler handler_;
  const test_support::InstalledMsgHandler installed_{handler_};
};

// Lines in the log.
inline LogLine missing(const std::string& tag) {
  return {5, "missingTagError", "No <" + tag + "> tag found in the platformInfoUpdate request"};
}
inline LogLine surplus(const std::string& tag) {
  return {8, "extraTagError", "More <" + tag + "> tag found in the platformInfoUpdate request"};
}
inline LogLine own(int level, const std::string& line) {
  return {level, "AG_platformInfoUpdateReqCb", line};
}

}  // namespace zan_serviceOrchAG::platform_info_test
