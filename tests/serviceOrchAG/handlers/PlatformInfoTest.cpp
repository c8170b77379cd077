#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "framework/core_log/Log.h"
#include "tests/serviceOrchAG/handlers/PlatformInfoHarness.h"

namespace zan_serviceOrchAG::platform_info_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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
}  // namespace zan_serviceOrchAG::platform_info_test
