#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "tests/serviceOrchAG/handlers/PlatformInfoHarness.h"

namespace zan_serviceOrchAG::platform_info_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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

}  // namespace
}  // namespace zan_serviceOrchAG::platform_info_test
