#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <future>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "framework/method/Config.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "serviceOrchAG/svc/Svc.h"
#include "tests/support/InstalledMsgHandler.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingSvc.h"
#include "tests/support/ReplyDocument.h"

namespace zan_serviceOrchAG {
namespace {

using method::Config;
using method::Value;
using serviceorchapi::UpdatePlatformInfoMe;
using serviceorchapi::ValidateAppInstancesMe;
using test_support::InstalledMsgHandler;
using test_support::LogCapture;
using test_support::LogLine;
using test_support::ManualClock;
using test_support::RecordingSvc;
using test_support::ReplyDocument;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

using Values = std::vector<std::pair<std::uint32_t, Value>>;

Value text(const char* value) {
  return base::String(value);
}
Value number(std::uint32_t value) {
  return value;
}
Value count(std::int32_t value) {
  return value;
}
Value load(float value) {
  return value;
}
Value state(std::uint8_t value) {
  return value;
}

const std::string kTop = "<OsVersion>2.4.1</OsVersion><Sysuptime>12 days</Sysuptime>";
const std::string kCpu = "<Cpu><minus1>0.25</minus1><minus5>1.5</minus5><minus15>2</minus15></Cpu>";
const std::string kMemory =
    "<Memory><minus1><MemTotalKB>8192</MemTotalKB><MemFreeKB>4096</MemFreeKB>"
    "<MemUsedKB>2048</MemUsedKB></minus1></Memory>";
const std::string kAppsMemory =
    "<AppsMemory><CurrentSnapshot><MemTotalKB>1024</MemTotalKB></CurrentSnapshot></AppsMemory>";
const std::string kDisk =
    "<Disk><DiskName>sda1</DiskName><DiskTotalKB>3072</DiskTotalKB><DiskFreeKB>2048</DiskFreeKB>"
    "<DiskUsedKB>1024</DiskUsedKB><DiskMountPoint>/</DiskMountPoint></Disk>";
const std::string kApplication =
    "<application><appInstanceId>a1</appInstanceId><adminStatus>enable</adminStatus>"
    "<operStatus>running</operStatus>"
    "<externalSoftwareManagement>true</externalSoftwareManagement>"
    "<installedVersion>1.0</installedVersion><hotfixes>h1 h2</hotfixes></application>";

std::string disksOf(const std::string& disks) {
  return "<DiskFilesystem><minus1>" + disks + "</minus1></DiskFilesystem>";
}

std::string reportOf(const std::string& content) {
  return "<platformInfoUpdateRequest>" + content + "</platformInfoUpdateRequest>";
}

const std::string kFull =
    reportOf(kTop + kCpu + kMemory + kAppsMemory + disksOf(kDisk) + kApplication);

const Values kDiskValues{{0x841, text("sda1")},
                         {0x843, text("/")},
                         {0x2815, number(3)},
                         {0x2816, number(2)},
                         {0x2817, number(1)}};
const Values kApplicationValues{{0x87e, text("a1")},
                                {0x880, text("1.0")},
                                {0x883, state(7)},
                                {0x88c, text("h1 h2")},
                                {0x88d, true}};

/// The full monitor without some of its values.
Values monitorWithout(const std::vector<std::uint32_t>& left) {
  Values values{{0x82f, text("2.4.1")}, {0x830, load(0.25F)}, {0x831, load(1.5F)},
                {0x832, load(2.0F)},    {0x836, count(1)},    {0x837, text("12 days")},
                {0x2811, number(8)},    {0x2812, number(4)},  {0x2813, number(2)},
                {0x2814, number(1)}};
  std::erase_if(values, [&](const auto& entry) {
    return std::find(left.begin(), left.end(), entry.first) != left.end();
  });
  return values;
}

Values valuesOf(const Config& config) {
  return {config.values().begin(), config.values().end()};
}

class PlatformInfo : public testing::Test {
 protected:
  PlatformInfo() { answer(true); }

  /// The engine's answer arrives, or its refusal.
  static void signal(const base::Buffer& cookie, bool isTaken) {
    UpdatePlatformInfoMe me;
    me.setCookie(cookie);
    if (isTaken) {
      Svc::successRspServiceorchapiUpdatePlatformInfoCb(me);
    } else {
      Svc::failedRspServiceorchapiUpdatePlatformInfoCb(me, 7, "no such slot");
    }
  }

  /// The engine answers every update from now on like this, at once.
  void answer(bool isTaken) {
    svc_.onSend([isTaken](const RecordingSvc::Sent& call) {
      if (call.classId == UpdatePlatformInfoMe::kClassId) {
        signal(call.cookie, isTaken);
      }
    });
  }

  void neverAnswer() {
    svc_.onSend([](const RecordingSvc::Sent&) {});
  }

  std::unique_ptr<Response> handle(const std::string& document, int slot = 3,
                                   const std::string& messageId = "id-1") {
    return std::unique_ptr<Response>(
        handler_.AG_platformInfoUpdateReqCb(messageId, "update", document, slot));
  }

  static void expectReply(const std::unique_ptr<Response>& response, unsigned code,
                          const std::string& message) {
    ASSERT_NE(nullptr, response);
    EXPECT_EQ(code, response->status);
    const ReplyDocument reply = ReplyDocument::parse(response->body);
    EXPECT_EQ("platformInfoUpdateResponse", reply.root);
    EXPECT_THAT(reply.below, ElementsAre("response"));
    EXPECT_THAT(reply.response,
                ElementsAre(Pair("code", std::to_string(code)), Pair("message", message)));
  }

  /// The report's monitor, disks and application instances, as the engine gets them.
  struct Report {
    Config monitor;
    std::vector<Config> disks;
    std::vector<Config> appInstances;
  };

  /// Handles a report, which is answered with OK, and returns what the engine got of it.
  Report reported(const std::string& document) {
    log_.clear();
    const std::size_t before = svc_.sent().size();
    expectReply(handle(document), 100, "OK");
    EXPECT_EQ(before + 2, svc_.sent().size());
    const auto update = svc_.calls<UpdatePlatformInfoMe>().back();
    const auto validation = svc_.calls<ValidateAppInstancesMe>().back();
    return {std::get<1>(update), std::get<2>(update).configs(), std::get<1>(validation).configs()};
  }

  /// The lines about the document, which come before the first call is announced.
  std::vector<LogLine> complaints() const {
    std::vector<LogLine> lines = log_.lines();
    const auto calls = std::find_if(lines.begin(), lines.end(), [](const LogLine& line) {
      return line.text.starts_with("Triggering ");
    });
    EXPECT_NE(lines.end(), calls);
    lines.erase(calls, lines.end());
    return lines;
  }

  RecordingSvc svc_;
  LogCapture log_;
  MsgHandler handler_;
  const InstalledMsgHandler installed_{handler_};
};

LogLine missing(const std::string& tag) {
  return {5, "missingTagError", "No <" + tag + "> tag found in the platformInfoUpdate request"};
}
LogLine surplus(const std::string& tag) {
  return {8, "extraTagError", "More <" + tag + "> tag found in the platformInfoUpdate request"};
}
LogLine own(int level, const std::string& line) {
  return {level, "AG_platformInfoUpdateReqCb", line};
}

// ----- The whole report -------------------------------------------------------------------------

TEST_F(PlatformInfo, FullReport_ReachesTheEngine) {
  const Report report = reported(kFull);
  EXPECT_EQ(0x286U, report.monitor.classId());
  EXPECT_EQ(monitorWithout({}), valuesOf(report.monitor));
  ASSERT_EQ(1U, report.disks.size());
  EXPECT_EQ(0x289U, report.disks[0].classId());
  EXPECT_EQ(kDiskValues, valuesOf(report.disks[0]));
  ASSERT_EQ(1U, report.appInstances.size());
  EXPECT_EQ(0x28fU, report.appInstances[0].classId());
  EXPECT_EQ(kApplicationValues, valuesOf(report.appInstances[0]));
  for (const Config& config : {report.monitor, report.disks[0], report.appInstances[0]}) {
    EXPECT_EQ(0x2000U, config.flags());
    EXPECT_TRUE(config.dn().empty());
    EXPECT_THAT(config.children(), IsEmpty());
  }
}

TEST_F(PlatformInfo, FullReport_LogsItsWay) {
  handle(kFull);
  EXPECT_THAT(
      log_.lines(),
      ElementsAre(own(1, "Triggering ValidateAppInstances method for slot : 3, Message ID : id-1"),
                  own(1, "Triggering UpdatePlatformInfo method for slot : 3, Message ID : id-1"),
                  LogLine{1, "successRspServiceorchapiUpdatePlatformInfoCb",
                          "successRspServiceorchapiUpdatePlatformInfoCb"},
                  own(1, "UpdatePlatformInfo : wait... for slot : 3, Message ID : id-1")));
}

TEST_F(PlatformInfo, Calls_AreAnnouncedAndMadeInOrder) {
  std::vector<std::string> lastLines;
  svc_.onSend([&](const RecordingSvc::Sent& call) {
    lastLines.push_back(log_.lines().back().text);
    if (call.classId == UpdatePlatformInfoMe::kClassId) {
      EXPECT_EQ(1U, handler_.waitingCookies()) << "the answer may come at once";
      signal(call.cookie, true);
    } else {
      EXPECT_EQ(0U, handler_.waitingCookies());
    }
  });
  handle(kFull);
  EXPECT_THAT(lastLines,
              ElementsAre("Triggering ValidateAppInstances method for slot : 3, Message ID : id-1",
                          "Triggering UpdatePlatformInfo method for slot : 3, Message ID : id-1"));
}

TEST_F(PlatformInfo, OnlyTheUpdate_IsWaitedFor) {
  handle(kFull);
  ASSERT_EQ(2U, svc_.sent().size());
  const auto validation = svc_.sent()[0];
  EXPECT_EQ(399U, validation.classId);
  EXPECT_FALSE(validation.responseRequired);
  EXPECT_EQ(4, static_cast<int>(validation.priority));
  const auto update = svc_.sent()[1];
  EXPECT_EQ(400U, update.classId);
  EXPECT_TRUE(update.responseRequired);
  EXPECT_EQ(4, static_cast<int>(update.priority));
  EXPECT_FALSE(validation.cookie.empty());
  EXPECT_NE(validation.cookie, update.cookie);
  EXPECT_EQ(1U, handler_.knownCookies());
  EXPECT_EQ(0U, handler_.waitingCookies());
}

TEST_F(PlatformInfo, Slot_GoesWithBothCalls) {
  handle(kFull, -1);
  EXPECT_EQ(4294967295U, std::get<0>(svc_.calls<UpdatePlatformInfoMe>().at(0)));
  EXPECT_EQ(4294967295U, std::get<0>(svc_.calls<ValidateAppInstancesMe>().at(0)));
  EXPECT_TRUE(
      log_.contains(1, "Triggering ValidateAppInstances method for slot : -1, Message ID : id-1"));
  EXPECT_TRUE(
      log_.contains(1, "Triggering UpdatePlatformInfo method for slot : -1, Message ID : id-1"));
  EXPECT_TRUE(log_.contains(1, "UpdatePlatformInfo : wait... for slot : -1, Message ID : id-1"));
}

TEST_F(PlatformInfo, SecondReport_CarriesNothingOfTheFirst) {
  reported(kFull);
  const Report report =
      reported(reportOf(disksOf("<Disk/>") + "<application><hotfixes>h</hotfixes></application>"));
  EXPECT_EQ((Values{{0x836, count(1)}}), valuesOf(report.monitor));
  ASSERT_EQ(1U, report.disks.size());
  EXPECT_EQ(Values{}, valuesOf(report.disks[0]));
  ASSERT_EQ(1U, report.appInstances.size());
  EXPECT_EQ((Values{{0x88c, text("h")}}), valuesOf(report.appInstances[0]));
}

TEST_F(PlatformInfo, Values_AreTrimmed) {
  const Report report = reported(
      reportOf("<OsVersion>\n 2 4\t</OsVersion><Cpu><minus1> 0.5 </minus1></Cpu>"
               "<Memory><minus1><MemTotalKB>\t2048\n</MemTotalKB></minus1></Memory>" +
               disksOf("<Disk><DiskName> sda </DiskName></Disk>") +
               "<application><operStatus> stopped </operStatus>"
               "<externalSoftwareManagement> true </externalSoftwareManagement></application>"));
  EXPECT_EQ(
      (Values{{0x82f, text("2 4")}, {0x830, load(0.5F)}, {0x836, count(1)}, {0x2811, number(2)}}),
      valuesOf(report.monitor));
  EXPECT_EQ((Values{{0x841, text("sda")}}), valuesOf(report.disks.at(0)));
  EXPECT_EQ((Values{{0x883, state(3)}, {0x88d, true}}), valuesOf(report.appInstances.at(0)));
}

TEST_F(PlatformInfo, TagTwice_TheLastCounts) {
  const Report report =
      reported(reportOf("<OsVersion>1</OsVersion><OsVersion>2</OsVersion>" +
                        disksOf("<Disk><DiskName>a</DiskName><DiskName>b</DiskName></Disk>")));
  EXPECT_EQ((Values{{0x82f, text("2")}, {0x836, count(1)}}), valuesOf(report.monitor));
  EXPECT_EQ((Values{{0x841, text("b")}}), valuesOf(report.disks.at(0)));
}

TEST_F(PlatformInfo, EmptyTexts_AreSet) {
  const Report report = reported(
      reportOf("<OsVersion/><Sysuptime> </Sysuptime>" +
               disksOf("<Disk><DiskName/><DiskMountPoint/></Disk>") +
               "<application><appInstanceId/><installedVersion/><hotfixes/></application>"));
  EXPECT_EQ((Values{{0x82f, text("")}, {0x836, count(1)}, {0x837, text("")}}),
            valuesOf(report.monitor));
  EXPECT_EQ((Values{{0x841, text("")}, {0x843, text("")}}), valuesOf(report.disks.at(0)));
  EXPECT_EQ((Values{{0x87e, text("")}, {0x880, text("")}, {0x88c, text("")}}),
            valuesOf(report.appInstances.at(0)));
}

// ----- What is missing or stands too often ------------------------------------------------------

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

// ----- Numbers ----------------------------------------------------------------------------------

struct Kilobytes {
  const char* sent;
  std::uint32_t down;
  std::uint32_t up;
};

class KilobyteValues : public PlatformInfo, public testing::WithParamInterface<Kilobytes> {};

TEST_P(KilobyteValues, TotalAndFree_AreRoundedDownUsedUp) {
  const auto tag = [](const std::string& name) {
    return "<" + name + ">" + GetParam().sent + "</" + name + ">";
  };
  const Report report = reported(reportOf(
      "<Memory><minus1>" + tag("MemTotalKB") + tag("MemFreeKB") + tag("MemUsedKB") +
      "</minus1></Memory><AppsMemory><CurrentSnapshot>" + tag("MemTotalKB") +
      "</CurrentSnapshot></AppsMemory>" +
      disksOf("<Disk>" + tag("DiskTotalKB") + tag("DiskFreeKB") + tag("DiskUsedKB") + "</Disk>")));
  const Value down = number(GetParam().down);
  const Value up = number(GetParam().up);
  EXPECT_EQ(
      (Values{{0x836, count(1)}, {0x2811, down}, {0x2812, down}, {0x2813, up}, {0x2814, down}}),
      valuesOf(report.monitor));
  EXPECT_EQ((Values{{0x2815, down}, {0x2816, down}, {0x2817, up}}), valuesOf(report.disks.at(0)));
  for (const LogLine& line : complaints()) {
    EXPECT_LT(line.level, 6) << line.text << ": no number is not worth a line";
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, KilobyteValues,
    testing::Values(Kilobytes{"0", 0, 0}, Kilobytes{"1", 0, 1}, Kilobytes{"1023", 0, 1},
                    Kilobytes{"1024", 1, 1}, Kilobytes{"1025", 1, 2}, Kilobytes{"2047", 1, 2},
                    Kilobytes{"2048", 2, 2}, Kilobytes{"00001025", 1, 2},
                    Kilobytes{"4294966272", 4194303, 4194303},
                    Kilobytes{"4294967295", 4194303, 4194304}, Kilobytes{"4294967296", 0, 0},
                    Kilobytes{"-1", 0, 0}, Kilobytes{"+1025", 0, 0}, Kilobytes{"1025KB", 0, 0},
                    Kilobytes{"1 025", 0, 0}, Kilobytes{"1025.0", 0, 0}, Kilobytes{"", 0, 0},
                    Kilobytes{"abc", 0, 0}, Kilobytes{"%s%n", 0, 0}));

struct Load {
  const char* sent;
  float forwarded;
};

class Loads : public PlatformInfo, public testing::WithParamInterface<Load> {};

TEST_P(Loads, Text_BecomesAFloat) {
  const std::string value = GetParam().sent;
  const Report report = reported(reportOf("<Cpu><minus1>" + value + "</minus1><minus5>" + value +
                                          "</minus5><minus15>" + value + "</minus15></Cpu>"));
  const Value expected = load(GetParam().forwarded);
  EXPECT_EQ((Values{{0x830, expected}, {0x831, expected}, {0x832, expected}}),
            valuesOf(report.monitor));
}

INSTANTIATE_TEST_SUITE_P(All, Loads,
                         testing::Values(Load{"0", 0.0F}, Load{"0.1", 0.1F}, Load{"12.75", 12.75F},
                                         Load{"-1.5", -1.5F}, Load{"1e2", 100.0F},
                                         Load{"2.5%", 2.5F}, Load{"", 0.0F}, Load{"high", 0.0F},
                                         Load{"0,5", 0.0F}, Load{"16777217", 16777216.0F},
                                         Load{"1e400", std::numeric_limits<float>::infinity()}));

// ----- Application instances --------------------------------------------------------------------

struct App {
  const char* name;
  const char* tags;
  Values values;
  std::vector<LogLine> lines;
};

void PrintTo(const App& app, std::ostream* out) {
  *out << app.name;
}

class Apps : public PlatformInfo, public testing::WithParamInterface<App> {};

TEST_P(Apps, Tags_BecomeAnObject) {
  const Report report = reported(reportOf(kTop + kCpu + kMemory + kAppsMemory + disksOf(kDisk) +
                                          "<application>" + GetParam().tags + "</application>"));
  ASSERT_EQ(1U, report.appInstances.size());
  EXPECT_EQ(GetParam().values, valuesOf(report.appInstances[0]));
  EXPECT_EQ(GetParam().lines, complaints());
  EXPECT_EQ(monitorWithout({}), valuesOf(report.monitor)) << "the platform's part is complete";
}

#define APP_ID "<appInstanceId>a1</appInstanceId>"
#define APP_VERSION "<installedVersion>1.0</installedVersion>"

INSTANTIATE_TEST_SUITE_P(
    States, Apps,
    testing::Values(
        App{"both active",
            APP_ID APP_VERSION "<adminStatus>enable</adminStatus><operStatus>running</operStatus>",
            {{0x87e, text("a1")}, {0x880, text("1.0")}, {0x883, state(7)}},
            {}},
        App{"enabled but stopped",
            APP_ID APP_VERSION "<adminStatus>enable</adminStatus><operStatus>stopped</operStatus>",
            {{0x87e, text("a1")}, {0x880, text("1.0")}, {0x883, state(3)}},
            {}},
        App{"disabled but running, the operational state first",
            APP_ID APP_VERSION "<operStatus>running</operStatus><adminStatus>disable</adminStatus>",
            {{0x87e, text("a1")}, {0x880, text("1.0")}, {0x883, state(7)}},
            {}},
        App{"only the operational state",
            APP_ID APP_VERSION "<operStatus>stopped</operStatus>",
            {{0x87e, text("a1")}, {0x880, text("1.0")}, {0x883, state(3)}},
            {}},
        App{"only the administrative state",
            APP_ID APP_VERSION "<adminStatus>disable</adminStatus>",
            {{0x87e, text("a1")}, {0x880, text("1.0")}, {0x883, state(3)}},
            {missing("operStatus")}},
        App{"neither state",
            APP_ID APP_VERSION,
            {{0x87e, text("a1")}, {0x880, text("1.0")}},
            {missing("operStatus")}},
        App{"unknown administrative state alone",
            APP_ID APP_VERSION "<adminStatus>bogus</adminStatus>",
            {{0x87e, text("a1")}, {0x880, text("1.0")}, {0x883, state(255)}},
            {own(8,
                 "AdminStatus value[bogus] incorrect for appInstance a1 in platformInfo "
                 "message"),
             missing("operStatus")}},
        App{"unknown administrative state, known operational state",
            APP_ID APP_VERSION "<adminStatus>bogus</adminStatus><operStatus>running</operStatus>",
            {{0x87e, text("a1")}, {0x880, text("1.0")}, {0x883, state(7)}},
            {own(8,
                 "AdminStatus value[bogus] incorrect for appInstance a1 in platformInfo "
                 "message")}},
        App{"known administrative state, unknown operational state",
            APP_ID APP_VERSION "<adminStatus>enable</adminStatus><operStatus>Running</operStatus>",
            {{0x87e, text("a1")}, {0x880, text("1.0")}, {0x883, state(255)}},
            {own(8,
                 "operStatus value[Running] incorrect for appInstance a1 in platformInfo "
                 "message")}},
        App{"both unknown",
            APP_ID APP_VERSION "<adminStatus/><operStatus>%s%n</operStatus>",
            {{0x87e, text("a1")}, {0x880, text("1.0")}, {0x883, state(255)}},
            {own(8, "AdminStatus value[] incorrect for appInstance a1 in platformInfo message"),
             own(8,
                 "operStatus value[%s%n] incorrect for appInstance a1 in platformInfo "
                 "message")}},
        App{"words of the other state",
            APP_ID APP_VERSION "<adminStatus>running</adminStatus><operStatus>enable</operStatus>",
            {{0x87e, text("a1")}, {0x880, text("1.0")}, {0x883, state(255)}},
            {own(8,
                 "AdminStatus value[running] incorrect for appInstance a1 in platformInfo "
                 "message"),
             own(8,
                 "operStatus value[enable] incorrect for appInstance a1 in platformInfo "
                 "message")}}));

INSTANTIATE_TEST_SUITE_P(
    OtherTags, Apps,
    testing::Values(
        App{"empty",
            "",
            {},
            {missing("appInstanceId"), missing("operStatus"), missing("installedVersion")}},
        App{"no identifier",
            APP_VERSION "<adminStatus>off</adminStatus><operStatus>on</operStatus>",
            {{0x880, text("1.0")}, {0x883, state(255)}},
            {missing("appInstanceId"),
             own(8, "AdminStatus value[off] incorrect for appInstance  in platformInfo message"),
             own(8, "operStatus value[on] incorrect for appInstance  in platformInfo message")}},
        App{"no version",
            APP_ID "<operStatus>running</operStatus>",
            {{0x87e, text("a1")}, {0x883, state(7)}},
            {missing("installedVersion")}},
        App{"management by others",
            APP_ID APP_VERSION "<operStatus>running</operStatus>"
                               "<externalSoftwareManagement>true</externalSoftwareManagement>",
            {{0x87e, text("a1")}, {0x880, text("1.0")}, {0x883, state(7)}, {0x88d, true}},
            {}},
        App{"no management by others",
            APP_ID APP_VERSION "<operStatus>running</operStatus>"
                               "<externalSoftwareManagement>false</externalSoftwareManagement>",
            {{0x87e, text("a1")}, {0x880, text("1.0")}, {0x883, state(7)}, {0x88d, false}},
            {}},
        App{"management in other letters",
            APP_ID APP_VERSION "<operStatus>running</operStatus>"
                               "<externalSoftwareManagement>True</externalSoftwareManagement>",
            {{0x87e, text("a1")}, {0x880, text("1.0")}, {0x883, state(7)}, {0x88d, false}},
            {}},
        App{"management empty",
            APP_ID APP_VERSION "<operStatus>running</operStatus><externalSoftwareManagement/>",
            {{0x87e, text("a1")}, {0x880, text("1.0")}, {0x883, state(7)}, {0x88d, false}},
            {}},
        App{"hot fixes",
            APP_ID APP_VERSION "<operStatus>running</operStatus><hotfixes>a, b</hotfixes>",
            {{0x87e, text("a1")}, {0x880, text("1.0")}, {0x883, state(7)}, {0x88c, text("a, b")}},
            {}}));

TEST_F(PlatformInfo, SeveralApplications_StandInDocumentOrder) {
  const Report report = reported(reportOf(
      "<application><appInstanceId>b</appInstanceId></application><applications><application>"
      "<appInstanceId>a</appInstanceId></application></applications>"
      "<application><appInstanceId>b</appInstanceId></application>"));
  ASSERT_EQ(3U, report.appInstances.size());
  EXPECT_EQ((Values{{0x87e, text("b")}}), valuesOf(report.appInstances[0]));
  EXPECT_EQ((Values{{0x87e, text("a")}}), valuesOf(report.appInstances[1]));
  EXPECT_EQ((Values{{0x87e, text("b")}}), valuesOf(report.appInstances[2]));
}

TEST_F(PlatformInfo, NoApplication_IsLoggedAndAnEmptySetIsSent) {
  const Report report = reported(reportOf(kTop + kCpu + kMemory + kAppsMemory + disksOf(kDisk)));
  EXPECT_THAT(report.appInstances, IsEmpty());
  EXPECT_THAT(complaints(), ElementsAre(missing("application")));
}

// ----- The engine's answer ----------------------------------------------------------------------

TEST_F(PlatformInfo, EngineRefuses_IsAnsweredAsFailed) {
  answer(false);
  expectReply(handle(kFull), 508, "Failed to update PlatformInfo in DME.");
  for (const LogLine& line : log_.lines()) {
    EXPECT_EQ(1, line.level) << line.text;
  }
}

TEST_F(PlatformInfo, AnswerToTheValidation_HasNoEffect) {
  svc_.onSend([](const RecordingSvc::Sent& call) {
    if (call.classId == ValidateAppInstancesMe::kClassId) {
      ValidateAppInstancesMe me;
      me.setCookie(call.cookie);
      Svc::failedRspServiceorchapiValidateAppInstancesCb(me, 7, "no such slot");
    } else {
      signal(call.cookie, true);
    }
  });
  expectReply(handle(kFull), 100, "OK");
}

TEST_F(PlatformInfo, NoAnswer_TimesOutAfterTenSecondsAndTheLateAnswerFindsNobody) {
  std::future<std::unique_ptr<Response>> request;  // outlives the clock, whose end lets it end
  ManualClock clock;
  neverAnswer();
  request = std::async(std::launch::async, [this] { return handle(kFull); });
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(10000)));
  EXPECT_EQ(1U, handler_.waitingCookies());
  clock.advance(std::chrono::milliseconds(10000));
  expectReply(request.get(), 506, "response time out.");
  EXPECT_EQ(own(8, "DME timeout during UpdatePlatformInfo for slot 3, Message ID : id-1"),
            log_.lines().back());
  EXPECT_EQ(0U, handler_.waitingCookies());
  EXPECT_EQ(1U, handler_.knownCookies());
  clock.advance(std::chrono::milliseconds(5000));
  signal(svc_.sent().at(1).cookie, true);
  EXPECT_EQ(1U, handler_.knownCookies());
}

TEST_F(PlatformInfo, AnswerJustBeforeTheTimeOut_Counts) {
  std::future<std::unique_ptr<Response>> request;  // outlives the clock, whose end lets it end
  ManualClock clock;
  neverAnswer();
  request = std::async(std::launch::async, [this] { return handle(kFull); });
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(10000)));
  clock.advance(std::chrono::milliseconds(9999));
  signal(svc_.sent().at(1).cookie, true);
  expectReply(request.get(), 100, "OK");
}

TEST_F(PlatformInfo, RefusalWhileWaiting_WakesAtOnce) {
  std::future<std::unique_ptr<Response>> request;  // outlives the clock, whose end lets it end
  ManualClock clock;
  neverAnswer();
  request = std::async(std::launch::async, [this] { return handle(kFull); });
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(10000)));
  signal(svc_.sent().at(1).cookie, false);
  expectReply(request.get(), 508, "Failed to update PlatformInfo in DME.");
}

// ----- Actions ----------------------------------------------------------------------------------

class OtherActions : public PlatformInfo, public testing::WithParamInterface<const char*> {};

TEST_P(OtherActions, AnyDocument_IsRefused) {
  const std::string message =
      std::string("Received platformInfoUpdate request with invalid action \"") + GetParam() + "\"";
  for (const std::string& document : {kFull, std::string("<malformed")}) {
    log_.clear();
    const std::unique_ptr<Response> response(
        handler_.AG_platformInfoUpdateReqCb("id-1", GetParam(), document, 3));
    expectReply(response, 500, message);
    EXPECT_THAT(log_.lines(), ElementsAre(LogLine{6, "errorResponse", message}));
  }
  EXPECT_THAT(svc_.sent(), IsEmpty());
  EXPECT_EQ(0U, handler_.knownCookies());
}

INSTANTIATE_TEST_SUITE_P(All, OtherActions, testing::Values("", "get", "Update", "update "));

// ----- Failures and threads ---------------------------------------------------------------------

TEST_F(PlatformInfo, UpdateFails_LeavesNoWaiterBehind) {
  svc_.onSend([](const RecordingSvc::Sent& call) {
    if (call.classId == UpdatePlatformInfoMe::kClassId) {
      throw std::runtime_error("no memory");
    }
  });
  EXPECT_THROW(handle(kFull), std::runtime_error);
  EXPECT_EQ(1U, handler_.knownCookies());
  EXPECT_EQ(0U, handler_.waitingCookies());
  signal(svc_.sent().at(1).cookie, true);  // would write into what is gone
}

TEST_F(PlatformInfo, ValidationFails_NothingIsFiled) {
  svc_.onSend([](const RecordingSvc::Sent&) { throw std::runtime_error("no memory"); });
  EXPECT_THROW(handle(kFull), std::runtime_error);
  EXPECT_EQ(1U, svc_.sent().size());
  EXPECT_EQ(0U, handler_.knownCookies());
}

TEST_F(PlatformInfo, TwoInFlight_GetTheirOwnAnswersInReverseOrder) {
  neverAnswer();
  auto third = std::async(std::launch::async, [this] { return handle(kFull, 3, "of three"); });
  ASSERT_TRUE(svc_.waitForSent(2));
  auto fourth =
      std::async(std::launch::async, [this] { return handle(reportOf(kTop), 4, "of four"); });
  ASSERT_TRUE(svc_.waitForSent(4));
  const auto calls = svc_.sent(UpdatePlatformInfoMe::kClassId);
  ASSERT_EQ(2U, calls.size());
  EXPECT_NE(calls[0].cookie, calls[1].cookie);
  signal(calls[1].cookie, false);
  expectReply(fourth.get(), 508, "Failed to update PlatformInfo in DME.");
  EXPECT_EQ(1U, handler_.waitingCookies());
  signal(calls[0].cookie, true);
  expectReply(third.get(), 100, "OK");
}

TEST_F(PlatformInfo, OneTimesOut_TheOtherIsAnswered) {
  std::future<std::unique_ptr<Response>> first;  // outlive the clock, whose end lets them end
  std::future<std::unique_ptr<Response>> second;
  ManualClock clock;
  neverAnswer();
  first = std::async(std::launch::async, [this] { return handle(kFull, 3); });
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(10000)));
  clock.advance(std::chrono::milliseconds(4000));
  second = std::async(std::launch::async, [this] { return handle(kFull, 4); });
  ASSERT_TRUE(clock.waitForDeadline(std::chrono::milliseconds(10000)));
  clock.advance(std::chrono::milliseconds(6000));
  expectReply(first.get(), 506, "response time out.");
  const auto calls = svc_.sent(UpdatePlatformInfoMe::kClassId);
  signal(calls.at(0).cookie, false);
  signal(calls.at(1).cookie, true);
  expectReply(second.get(), 100, "OK");
}

TEST_F(PlatformInfo, AnsweredTwice_OneOfTheAnswersIsTaken) {
  std::vector<std::thread> engines;
  svc_.onSend([&engines](const RecordingSvc::Sent& call) {
    if (call.classId == UpdatePlatformInfoMe::kClassId) {
      for (const bool isTaken : {true, false}) {
        engines.emplace_back([cookie = call.cookie, isTaken] { signal(cookie, isTaken); });
      }
    }
  });
  for (int round = 0; round < 50; ++round) {
    const auto response = handle(reportOf(kTop));
    EXPECT_THAT(response->status, testing::AnyOf(100U, 508U));
    for (std::thread& engine : engines) {
      engine.join();
    }
    engines.clear();
  }
}

TEST_F(PlatformInfo, ManyReportsAtOnce_GetTheirOwnObjects) {
  std::vector<std::thread> workers;
  for (int slot = 1; slot <= 5; ++slot) {
    workers.emplace_back([this, slot] {
      const std::string name = "disk" + std::to_string(slot);
      for (int request = 0; request < 40; ++request) {
        expectReply(
            handle(reportOf(disksOf("<Disk><DiskName>" + name + "</DiskName></Disk>")), slot), 100,
            "OK");
      }
    });
  }
  for (std::thread& worker : workers) {
    worker.join();
  }
  const auto calls = svc_.calls<UpdatePlatformInfoMe>();
  EXPECT_EQ(200U, calls.size());
  for (const auto& [slot, monitor, disks] : calls) {
    ASSERT_EQ(1U, disks.size());
    EXPECT_EQ((Values{{0x841, base::String("disk" + std::to_string(slot))}}),
              valuesOf(disks.configs()[0]));
  }
}

TEST_F(PlatformInfo, ThousandReports_LeaveAThousandCookies) {
  core_log::setLevel(8);
  for (int report = 0; report < 1000; ++report) {
    handle(kFull);
  }
  EXPECT_EQ(1000U, handler_.knownCookies());
  EXPECT_EQ(0U, handler_.waitingCookies());
}

// ----- Large and hostile documents --------------------------------------------------------------

TEST_F(PlatformInfo, ThousandDisks_AllReachTheEngine) {
  std::string disks;
  for (int disk = 0; disk < 1000; ++disk) {
    disks += "<Disk><DiskName>" + std::to_string(disk) + "</DiskName></Disk>";
  }
  core_log::setLevel(8);
  const Report report = reported(reportOf(kTop + disksOf(disks)));
  EXPECT_EQ(Value(std::int32_t{1000}), *report.monitor.find(0x836));
  ASSERT_EQ(1000U, report.disks.size());
  EXPECT_EQ((Values{{0x841, text("999")}}), valuesOf(report.disks[999]));
}

TEST_F(PlatformInfo, DocumentBeyondTheBounds_IsAnEmptyReport) {
  std::string nested;
  for (int depth = 0; depth < 1000; ++depth) {
    nested += "<a>";
  }
  for (int depth = 0; depth < 1000; ++depth) {
    nested += "</a>";
  }
  for (const std::string& content :
       {nested,
        "<application><hotfixes>" + std::string(1024 * 1024, 'h') + "</hotfixes></application>"}) {
    const Report report = reported(reportOf(kTop + kCpu + content));
    EXPECT_EQ(Values{}, valuesOf(report.monitor));
    EXPECT_THAT(report.appInstances, IsEmpty());
    EXPECT_EQ(7U, complaints().size());
  }
}

TEST_F(PlatformInfo, ControlCharactersInValues_AreEscapedInTheLog) {
  reported(
      reportOf("<application><appInstanceId>a&#10;1</appInstanceId>"
               "<operStatus>x&#13;y</operStatus></application>"));
  EXPECT_TRUE(log_.contains(8,
                            "operStatus value[x\\x0Dy] incorrect for appInstance a\\x0A1 in "
                            "platformInfo message"));
}

}  // namespace
}  // namespace zan_serviceOrchAG
