#include "sma/messages/ReportDocuments.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace sma {
namespace {

using std::chrono::seconds;

std::string textAt(Element& root, const char* path) {
  const Element* found = root.find(path);
  return found == nullptr ? "(none)" : found->text;
}

std::string childNames(const Element& parent) {
  std::string names;
  for (const Element& child : parent.children) {
    names += (names.empty() ? "" : " ") + child.name;
  }
  return names;
}

TEST(ReportDocuments, Platform_HasEveryGroupInItsPlace) {
  Element report = platformDocument(BladePlatform(1, 3, 2), seconds(5));
  EXPECT_EQ(report.name, "platformInfoUpdateRequest");
  EXPECT_EQ(childNames(report),
            "OsVersion Sysuptime Cpu Memory AppsMemory DiskFilesystem application application");
  EXPECT_EQ(childNames(*report.find("Cpu")), "minus1 minus5 minus15");
  EXPECT_EQ(childNames(*report.find("Memory")), "minus1");
  EXPECT_EQ(childNames(*report.find("Memory/minus1")), "MemTotalKB MemFreeKB MemUsedKB");
  EXPECT_EQ(childNames(*report.find("AppsMemory")), "CurrentSnapshot");
  EXPECT_EQ(childNames(*report.find("AppsMemory/CurrentSnapshot")), "MemTotalKB");
  EXPECT_EQ(childNames(*report.find("DiskFilesystem")), "minus1");
  EXPECT_EQ(childNames(*report.find("DiskFilesystem/minus1/Disk")),
            "DiskName DiskTotalKB DiskFreeKB DiskUsedKB DiskMountPoint");
  EXPECT_EQ(childNames(*report.find("application")),
            "appInstanceId adminStatus operStatus externalSoftwareManagement installedVersion "
            "hotfixes");
}

TEST(ReportDocuments, Platform_CarriesTheValuesOfTheMachine) {
  const BladePlatform platform(1, 3, 2);
  Element report = platformDocument(platform, seconds(5));
  EXPECT_EQ(textAt(report, "OsVersion"), "2.4.1");
  EXPECT_NEAR(std::strtod(textAt(report, "Cpu/minus5").c_str(), nullptr),
              platform.load(seconds(5)).minus5, 0.006);
  EXPECT_EQ(textAt(report, "Memory/minus1/MemUsedKB"),
            std::to_string(platform.memory(seconds(5)).usedKb));
  EXPECT_EQ(textAt(report, "DiskFilesystem/minus1/Disk/DiskName"), "sda1");
  EXPECT_EQ(report.find("DiskFilesystem/minus1")->children.size(),
            platform.disks(seconds(5)).size());
  EXPECT_EQ(textAt(report, "application/appInstanceId"), "slot3-app1");
  EXPECT_EQ(textAt(report, "application/adminStatus"), "enable");
  EXPECT_EQ(textAt(report, "application/operStatus"), "running");
  EXPECT_EQ(textAt(report, "application/externalSoftwareManagement"), "false");
  EXPECT_EQ(textAt(report, "application/installedVersion"), "1.1");
}

TEST(ReportDocuments, InstanceThatIsOff_IsReportedSo) {
  BladePlatform platform(1, 3, 1);
  platform.change({.id = "slot3-app1", .enabled = false, .running = false, .external = true});
  Element report = platformDocument(platform, seconds(5));
  EXPECT_EQ(textAt(report, "application/adminStatus"), "disable");
  EXPECT_EQ(textAt(report, "application/operStatus"), "stopped");
  EXPECT_EQ(textAt(report, "application/externalSoftwareManagement"), "true");
}

TEST(ReportDocuments, UpTime_CountsDaysAndTheClock) {
  const BladePlatform platform(1, 3, 0);
  const auto toFullDay = std::chrono::days(100) - platform.upTime(seconds(0));
  Element report = platformDocument(platform, toFullDay + std::chrono::hours(4) + seconds(306));
  EXPECT_EQ(textAt(report, "Sysuptime"), "100 days 04:05:06");
}

TEST(ReportDocuments, AppFailure_NamesTheInstance) {
  EXPECT_EQ(toXml(appFailureDocument("slot3-app1")),
            "<appFailureRequest><appInstanceId>slot3-app1</appInstanceId></appFailureRequest>");
}

TEST(ReportDocuments, Progress_HasItsSevenTags) {
  Progress progress;
  progress.app = "-1";
  progress.command = "formatDisk";
  progress.percent = 40;
  progress.status = "failed";
  progress.code = 503;
  progress.ack = true;
  progress.error = "disk is in use";
  EXPECT_EQ(toXml(progressDocument(progress)),
            "<commandProgressUpdateRequest><appInstanceId>-1</appInstanceId>"
            "<operCmd>formatDisk</operCmd><operProgress>40</operProgress>"
            "<operStatus>failed</operStatus><code>503</code><ack>true</ack>"
            "<errorDesc>disk is in use</errorDesc></commandProgressUpdateRequest>");
  progress.ack = false;
  EXPECT_NE(toXml(progressDocument(progress)).find("<ack>false</ack>"), std::string::npos);
}

}  // namespace
}  // namespace sma
