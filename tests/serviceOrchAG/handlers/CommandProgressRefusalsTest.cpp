#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/serviceOrchAG/handlers/CommandProgressHarness.h"

// Reports that are refused.

namespace zan_serviceOrchAG::command_progress_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct WrongWord {
  const char* sent;
  const char* message;
};

class WrongCommandWords : public CommandProgress, public testing::WithParamInterface<WrongWord> {};

TEST_P(WrongCommandWords, Report_IsRefusedWithTheStrippedWord) {
  expectRefused(handle(Sent().with("operCmd", GetParam().sent)), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    All, WrongCommandWords,
    testing::Values(WrongWord{"x.y.installApp",
                              "Invalid value \"y.installApp\" found for <operCmd> in the "
                              "commandProgressUpdate request"},
                    WrongWord{"app. formatDisk",
                              "Invalid value \" formatDisk\" found for <operCmd> in the "
                              "commandProgressUpdate request"},
                    WrongWord{"InstallApp",
                              "Invalid value \"InstallApp\" found for <operCmd> in the "
                              "commandProgressUpdate request"},
                    WrongWord{"installApp.",
                              "Invalid value \"\" found for <operCmd> in the commandProgressUpdate "
                              "request"},
                    WrongWord{" ",
                              "Invalid value \"\" found for <operCmd> in the commandProgressUpdate "
                              "request"},
                    WrongWord{"reboot",
                              "Invalid value \"reboot\" found for <operCmd> in the "
                              "commandProgressUpdate request"},
                    WrongWord{"%s%n",
                              "Invalid value \"%s%n\" found for <operCmd> in the "
                              "commandProgressUpdate request"}));

class WrongStateWords : public CommandProgress, public testing::WithParamInterface<WrongWord> {};

TEST_P(WrongStateWords, Report_IsRefused) {
  expectRefused(handle(Sent().with("operStatus", GetParam().sent)), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    All, WrongStateWords,
    testing::Values(WrongWord{" paused ",
                              "Invalid value \"paused\" found for <operStatus> in the "
                              "commandProgressUpdate request"},
                    WrongWord{"",
                              "Invalid value \"\" found for <operStatus> in the "
                              "commandProgressUpdate request"},
                    WrongWord{"stopped",
                              "Invalid value \"stopped\" found for <operStatus> in the "
                              "commandProgressUpdate request"},
                    WrongWord{"Running",
                              "Invalid value \"Running\" found for <operStatus> in the "
                              "commandProgressUpdate request"}));

struct Missing {
  const char* tag;
  const char* message;
};

class MissingTags : public CommandProgress, public testing::WithParamInterface<Missing> {};

TEST_P(MissingTags, Report_IsRefused) {
  expectRefused(handle(Sent().without(GetParam().tag)), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    All, MissingTags,
    testing::Values(
        Missing{"appInstanceId",
                "No <appInstanceId> tag found in the commandProgressUpdate request"},
        Missing{"operCmd", "No <operCmd> tag found in the commandProgressUpdate request"},
        Missing{"operProgress", "No <operProgress> tag found in the commandProgressUpdate request"},
        Missing{"operStatus", "No <operStatus> tag found in the commandProgressUpdate request"},
        Missing{"code", "No <code> tag found in the commandProgressUpdate request"},
        Missing{"ack", "No <ack> tag found in the commandProgressUpdate request"}));

TEST_F(CommandProgress, EmptyInstance_IsRefused) {
  expectRefused(handle(Sent().with("appInstanceId", " \t")),
                "Invalid value \"\" found for <appInstanceId> in the commandProgressUpdate "
                "request");
}

TEST_F(CommandProgress, EmptyCode_IsRefused) {
  expectRefused(handle(Sent().with("code", "")),
                "Invalid value \"\" found for <code> in the commandProgressUpdate request");
}

/// Every tag is wrong; from one case to the next the first wrong one is put right.
TEST_F(CommandProgress, SeveralTagsWrong_TheFirstIsNamed) {
  Sent report = Sent()
                    .with("appInstanceId", "")
                    .with("operCmd", "reboot")
                    .without("operProgress")
                    .with("operStatus", "paused")
                    .with("code", "")
                    .without("ack")
                    .without("errorDesc");
  expectRefused(handle(report),
                "Invalid value \"\" found for <appInstanceId> in the commandProgressUpdate "
                "request");
  report = report.with("appInstanceId", "1");
  expectRefused(handle(report),
                "Invalid value \"reboot\" found for <operCmd> in the commandProgressUpdate "
                "request");
  report = report.with("operCmd", "stopApp");
  expectRefused(handle(report), "No <operProgress> tag found in the commandProgressUpdate request");
  report.tags.emplace_back("operProgress", "");
  expectRefused(handle(report),
                "Invalid value \"paused\" found for <operStatus> in the commandProgressUpdate "
                "request");
  report = report.with("operStatus", "failed");
  expectRefused(handle(report),
                "Invalid value \"\" found for <code> in the commandProgressUpdate request");
  report = report.with("code", "x");
  expectRefused(handle(report), "No <ack> tag found in the commandProgressUpdate request");
}

TEST_F(CommandProgress, RefusedWithoutAck_IsAnsweredAllTheSame) {
  expectRefused(handle(Sent().with("ack", "no").without("code")),
                "No <code> tag found in the commandProgressUpdate request");
}

TEST_F(CommandProgress, NoDocument_IsRefusedForItsFirstTag) {
  for (const std::string& document :
       {std::string(), std::string("no document"), std::string("<commandProgressUpdateRequest/>"),
        std::string("<commandProgressRequest><appInstanceId>1</appInstanceId>"
                    "</commandProgressRequest>"),
        std::string("\xff\xfe"), std::string(2 * 1024 * 1024, 'x')}) {
    expectRefused(handleDocument(document),
                  "No <appInstanceId> tag found in the commandProgressUpdate request");
  }
}

TEST_F(CommandProgress, TagTwice_TheLastCounts) {
  Sent report;
  report.tags.emplace_back("operCmd", "stopApp");
  handle(report);
  EXPECT_THAT(svc_.calls<UpdateProgressMe>(), ElementsAre(progressOf("17", 5, 50, 1, 102, "none")));
}

struct WrongAction {
  const char* action;
  const char* message;
};

class WrongActions : public CommandProgress, public testing::WithParamInterface<WrongAction> {};

TEST_P(WrongActions, AnyDocument_IsRefused) {
  for (const std::string& document : {Sent().document(), std::string("<malformed")}) {
    const auto response = handleDocument(document, 3, GetParam().action);
    expectReply(response, 500, GetParam().message);
    EXPECT_THAT(log_.lines(), ElementsAre(LogLine{6, "errorResponse", GetParam().message}));
  }
  EXPECT_THAT(svc_.sent(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    All, WrongActions,
    testing::Values(
        WrongAction{"get", "Received commandProgressUpdate request with invalid action \"get\""},
        WrongAction{"", "Received commandProgressUpdate request with invalid action \"\""},
        WrongAction{"Update",
                    "Received commandProgressUpdate request with invalid action \"Update\""},
        WrongAction{"update ",
                    "Received commandProgressUpdate request with invalid action \"update \""}));

}  // namespace
}  // namespace zan_serviceOrchAG::command_progress_test
