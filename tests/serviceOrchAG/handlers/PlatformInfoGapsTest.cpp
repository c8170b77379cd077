#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "tests/serviceOrchAG/handlers/PlatformInfoHarness.h"

// Reports in which something is missing or stands too often.

namespace zan_serviceOrchAG::platform_info_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Gap {
  const char* name;
  std::string document;
  std::vector<std::uint32_t> unset;
  std::vector<LogLine> lines;
};

void PrintTo(const Gap& gap, std::ostream* out) {
  *out << gap.name;
}

class Gaps : public PlatformInfo, public testing::WithParamInterface<Gap> {};

TEST_P(Gaps, ValuesConcerned_AreLoggedAndTheRestGoesOn) {
  const Report report = reported(GetParam().document);
  EXPECT_EQ(monitorWithout(GetParam().unset), valuesOf(report.monitor));
  EXPECT_EQ(GetParam().lines, complaints());
  EXPECT_EQ(1U, report.appInstances.size());
}

std::string withTop(const std::string& top) {
  return reportOf(top + kCpu + kMemory + kAppsMemory + disksOf(kDisk) + kApplication);
}
std::string withCpu(const std::string& cpu) {
  return reportOf(kTop + cpu + kMemory + kAppsMemory + disksOf(kDisk) + kApplication);
}
std::string withMemory(const std::string& memory) {
  return reportOf(kTop + kCpu + memory + kAppsMemory + disksOf(kDisk) + kApplication);
}
std::string withAppsMemory(const std::string& memory) {
  return reportOf(kTop + kCpu + kMemory + memory + disksOf(kDisk) + kApplication);
}
std::string withDisks(const std::string& disks) {
  return reportOf(kTop + kCpu + kMemory + kAppsMemory + disks + kApplication);
}

INSTANTIATE_TEST_SUITE_P(
    TopLevel, Gaps,
    testing::Values(
        Gap{"no OsVersion",
            withTop("<Sysuptime>12 days</Sysuptime>"),
            {0x82f},
            {missing("OsVersion")}},
        Gap{"no Sysuptime",
            withTop("<OsVersion>2.4.1</OsVersion>"),
            {0x837},
            {missing("Sysuptime")}},
        Gap{"neither", withTop(""), {0x82f, 0x837}, {missing("OsVersion"), missing("Sysuptime")}},
        Gap{"other letter case",
            withTop("<osVersion>1</osVersion><Sysuptime>12 days</Sysuptime>"),
            {0x82f},
            {missing("OsVersion")}}));

INSTANTIATE_TEST_SUITE_P(
    Cpu, Gaps,
    testing::Values(
        Gap{"none", withCpu(""), {0x830, 0x831, 0x832}, {missing("Cpu")}},
        Gap{"two", withCpu(kCpu + kCpu), {0x830, 0x831, 0x832}, {surplus("Cpu")}},
        Gap{"three", withCpu(kCpu + "<Cpu/>" + kCpu), {0x830, 0x831, 0x832}, {surplus("Cpu")}},
        Gap{"empty",
            withCpu("<Cpu/>"),
            {0x830, 0x831, 0x832},
            {own(6, "No <minus1> tag found for Cpu in platformInfoUpdate."),
             own(6, "No <minus5> tag found for Cpu in platformInfoUpdate."),
             own(6, "No <minus15> tag found for Cpu in platformInfoUpdate.")}},
        Gap{"no minus1",
            withCpu("<Cpu><minus5>1.5</minus5><minus15>2</minus15></Cpu>"),
            {0x830},
            {own(6, "No <minus1> tag found for Cpu in platformInfoUpdate.")}},
        Gap{"no minus5",
            withCpu("<Cpu><minus1>0.25</minus1><minus15>2</minus15></Cpu>"),
            {0x831},
            {own(6, "No <minus5> tag found for Cpu in platformInfoUpdate.")}},
        Gap{"no minus15",
            withCpu("<Cpu><minus1>0.25</minus1><minus5>1.5</minus5></Cpu>"),
            {0x832},
            {own(6, "No <minus15> tag found for Cpu in platformInfoUpdate.")}}));

const char* const kMinus1 =
    "<minus1><MemTotalKB>8192</MemTotalKB><MemFreeKB>4096</MemFreeKB><MemUsedKB>2048</MemUsedKB>"
    "</minus1>";

INSTANTIATE_TEST_SUITE_P(
    Memory, Gaps,
    testing::Values(
        Gap{"none", withMemory(""), {0x2811, 0x2812, 0x2813}, {missing("Memory")}},
        Gap{"two", withMemory(kMemory + kMemory), {0x2811, 0x2812, 0x2813}, {surplus("Memory")}},
        Gap{"no minus1",
            withMemory("<Memory><minus5/></Memory>"),
            {0x2811, 0x2812, 0x2813},
            {own(8, "No <minus1> tag found for Memory in platformInfoUpdate.")}},
        Gap{"two minus1",
            withMemory(std::string("<Memory>") + kMinus1 + kMinus1 + "</Memory>"),
            {0x2811, 0x2812, 0x2813},
            {own(8, "2 <minus1> tag found for Memory in platformInfoUpdate.")}},
        Gap{"values of the group itself",
            withMemory("<Memory><MemTotalKB>8192</MemTotalKB></Memory>"),
            {0x2811, 0x2812, 0x2813},
            {own(8, "No <minus1> tag found for Memory in platformInfoUpdate.")}},
        Gap{"empty minus1",
            withMemory("<Memory><minus1/></Memory>"),
            {0x2811, 0x2812, 0x2813},
            {own(6, "No <MemTotalKB> tag found for Memory in platformInfoUpdate."),
             own(6, "No <MemFreeKB> tag found for Memory in platformInfoUpdate."),
             own(6, "No <MemUsedKB> tag found for Memory in platformInfoUpdate.")}},
        Gap{"no MemFreeKB",
            withMemory("<Memory><minus1><MemTotalKB>8192</MemTotalKB><MemUsedKB>2048</MemUsedKB>"
                       "</minus1></Memory>"),
            {0x2812},
            {own(6, "No <MemFreeKB> tag found for Memory in platformInfoUpdate.")}}));

INSTANTIATE_TEST_SUITE_P(
    AppsMemory, Gaps,
    testing::Values(
        Gap{"none", withAppsMemory(""), {0x2814}, {missing("AppsMemory")}},
        Gap{"two", withAppsMemory(kAppsMemory + kAppsMemory), {0x2814}, {surplus("AppsMemory")}},
        Gap{"no CurrentSnapshot",
            withAppsMemory("<AppsMemory><minus1/></AppsMemory>"),
            {0x2814},
            {own(8, "No <CurrentSnapshot> tag found for AppsMemory in platformInfoUpdate.")}},
        Gap{"three CurrentSnapshot",
            withAppsMemory("<AppsMemory><CurrentSnapshot/><CurrentSnapshot/><CurrentSnapshot/>"
                           "</AppsMemory>"),
            {0x2814},
            {own(8, "3 <CurrentSnapshot> tag found for AppsMemory in platformInfoUpdate.")}},
        Gap{"no MemTotalKB",
            withAppsMemory("<AppsMemory><CurrentSnapshot><MemFreeKB>1</MemFreeKB>"
                           "</CurrentSnapshot></AppsMemory>"),
            {0x2814},
            {own(6, "No <MemTotalKB> tag found for AppsMemory in platformInfoUpdate.")}}));

INSTANTIATE_TEST_SUITE_P(
    DiskFilesystem, Gaps,
    testing::Values(
        Gap{"none", withDisks(""), {0x836}, {missing("DiskFilesystem")}},
        Gap{"two",
            withDisks(disksOf(kDisk) + disksOf(kDisk)),
            {0x836},
            {surplus("DiskFilesystem")}},
        Gap{"no minus1",
            withDisks("<DiskFilesystem>" + kDisk + "</DiskFilesystem>"),
            {0x836},
            {own(8, "No <minus1> tag found for DiskFilesystem in platformInfoUpdate.")}},
        Gap{"two minus1",
            withDisks("<DiskFilesystem><minus1>" + kDisk + "</minus1><minus1/></DiskFilesystem>"),
            {0x836},
            {own(8, "2 <minus1> tag found for DiskFilesystem in platformInfoUpdate.")}}));

TEST_F(PlatformInfo, NoDisks_AreCountedAndLogged) {
  const Report report = reported(withDisks(disksOf("<disk/>")));
  EXPECT_EQ(Value(std::int32_t{0}), *report.monitor.find(0x836));
  EXPECT_THAT(report.disks, IsEmpty());
  EXPECT_THAT(complaints(), ElementsAre(missing("Disk")));
}

TEST_F(PlatformInfo, GroupLeftOut_SendsNoDisks) {
  EXPECT_THAT(reported(withDisks("")).disks, IsEmpty());
  EXPECT_THAT(reported(withDisks(disksOf(kDisk) + disksOf(kDisk))).disks, IsEmpty());
  EXPECT_THAT(reported(withDisks("<DiskFilesystem><minus1>" + kDisk + "</minus1><minus1>" + kDisk +
                                 "</minus1></DiskFilesystem>"))
                  .disks,
              IsEmpty());
}

TEST_F(PlatformInfo, EmptyDisk_IsAnObjectAndEachTagIsLogged) {
  const Report report = reported(withDisks(disksOf("<Disk/>")));
  ASSERT_EQ(1U, report.disks.size());
  EXPECT_EQ(Values{}, valuesOf(report.disks[0]));
  EXPECT_THAT(
      complaints(),
      ElementsAre(missing("DiskName"),
                  own(6, "No <DiskTotalKB> tag found for DiskFilesystem in platformInfoUpdate."),
                  own(6, "No <DiskFreeKB> tag found for DiskFilesystem in platformInfoUpdate."),
                  own(6, "No <DiskUsedKB> tag found for DiskFilesystem in platformInfoUpdate."),
                  missing("DiskMountPoint")));
}

TEST_F(PlatformInfo, SeveralDisks_StandInDocumentOrder) {
  std::string disks;
  for (const char* name : {"c", "a", "b", "a"}) {
    disks += std::string("<Disk><DiskName>") + name + "</DiskName></Disk><Tape/>";
  }
  const Report report = reported(withDisks(disksOf(disks)));
  EXPECT_EQ(Value(std::int32_t{4}), *report.monitor.find(0x836));
  ASSERT_EQ(4U, report.disks.size());
  EXPECT_EQ((Values{{0x841, text("c")}}), valuesOf(report.disks[0]));
  EXPECT_EQ((Values{{0x841, text("a")}}), valuesOf(report.disks[1]));
  EXPECT_EQ((Values{{0x841, text("b")}}), valuesOf(report.disks[2]));
  EXPECT_EQ((Values{{0x841, text("a")}}), valuesOf(report.disks[3]));
}

TEST_F(PlatformInfo, DisksElsewhere_AreNoneOfTheFileSystems) {
  const Report report =
      reported(reportOf(kDisk + "<DiskFilesystem><minus1>" + kDisk + "</minus1><minus5>" + kDisk +
                        "</minus5></DiskFilesystem>"));
  EXPECT_EQ((Values{{0x836, count(1)}}), valuesOf(report.monitor));
  EXPECT_EQ(1U, report.disks.size());
}

TEST_F(PlatformInfo, DeeperElements_CountButForTheFileSystemsOwnChild) {
  const Report report = reported(
      reportOf("<x>" + kCpu + "</x><Memory><x>" + kMinus1 + "</x></Memory>" +
               "<AppsMemory><x><CurrentSnapshot><MemTotalKB>1024</MemTotalKB></CurrentSnapshot></x>"
               "</AppsMemory>" +
               disksOf("<x>" + kDisk + "</x>")));
  EXPECT_EQ(monitorWithout({0x82f, 0x837}), valuesOf(report.monitor));
  EXPECT_EQ(1U, report.disks.size());
  const Report without =
      reported(withDisks("<DiskFilesystem><x><minus1>" + kDisk + "</minus1></x></DiskFilesystem>"));
  EXPECT_EQ(monitorWithout({0x836}), valuesOf(without.monitor));
  EXPECT_THAT(
      complaints(),
      ElementsAre(own(8, "No <minus1> tag found for DiskFilesystem in platformInfoUpdate.")));
}

TEST_F(PlatformInfo, NoDocument_IsAnEmptyReport) {
  for (const std::string& document :
       {std::string(), std::string("no document"), std::string("<platformInfoUpdateRequest>"),
        std::string("<platformInfoUpdateRequest/>"), std::string("\xff\xfe"),
        std::string("<!DOCTYPE x [<!ENTITY a 'b'>]><platformInfoUpdateRequest/>")}) {
    const Report report = reported(document);
    EXPECT_EQ(Values{}, valuesOf(report.monitor)) << document;
    EXPECT_THAT(report.disks, IsEmpty());
    EXPECT_THAT(report.appInstances, IsEmpty());
    EXPECT_THAT(complaints(), ElementsAre(missing("OsVersion"), missing("Sysuptime"),
                                          missing("Cpu"), missing("Memory"), missing("AppsMemory"),
                                          missing("DiskFilesystem"), missing("application")))
        << document;
  }
}

TEST_F(PlatformInfo, OtherRoot_HasGroupsButNoTags) {
  const Report report = reported("<other>" + kTop + kCpu + kApplication + "</other>");
  EXPECT_EQ((Values{{0x830, load(0.25F)}, {0x831, load(1.5F)}, {0x832, load(2.0F)}}),
            valuesOf(report.monitor));
  EXPECT_EQ(1U, report.appInstances.size());
}

}  // namespace
}  // namespace zan_serviceOrchAG::platform_info_test
