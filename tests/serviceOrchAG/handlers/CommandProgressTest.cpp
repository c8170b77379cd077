#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/Response.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingSvc.h"
#include "tests/support/ReplyDocument.h"

namespace zan_serviceOrchAG {
namespace {

using serverapi::OsControllerUpgradeProgressMe;
using serviceorchapi::UpdateDiskFormatStatusMe;
using serviceorchapi::UpdateProgressMe;
using test_support::LogCapture;
using test_support::LogLine;
using test_support::RecordingSvc;
using test_support::ReplyDocument;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

using Tags = std::vector<std::pair<std::string, std::string>>;

/// A report that asks for a reply, with some tags changed and some left out.
struct Sent {
  Tags tags{{"appInstanceId", "17"},   {"operCmd", "startApp"}, {"operProgress", "50"},
            {"operStatus", "running"}, {"code", "102"},         {"ack", "true"},
            {"errorDesc", "none"}};

  Sent with(const std::string& tag, const std::string& value) const {
    Sent changed = *this;
    for (auto& [name, text] : changed.tags) {
      if (name == tag) {
        text = value;
      }
    }
    return changed;
  }

  Sent without(const std::string& tag) const {
    Sent changed = *this;
    std::erase_if(changed.tags, [&](const auto& entry) { return entry.first == tag; });
    return changed;
  }

  /// The values stand in the document as they are, so that they may hold references.
  std::string document() const {
    std::string text = "<commandProgressUpdateRequest>";
    for (const auto& [tag, value] : tags) {
      text.append("<" + tag + ">").append(value).append("</" + tag + ">");
    }
    return text + "</commandProgressUpdateRequest>";
  }
};

class CommandProgress : public testing::Test {
 protected:
  std::unique_ptr<Response> handleDocument(const std::string& document, int slot = 3,
                                           const std::string& action = "update") {
    log_.clear();
    return std::unique_ptr<Response>(
        handler_.AG_commandProgressUpdateReqCb("id-1", action, document, slot));
  }

  std::unique_ptr<Response> handle(const Sent& report, int slot = 3) {
    return handleDocument(report.document(), slot);
  }

  static void expectReply(const std::unique_ptr<Response>& response, unsigned code,
                          const std::string& message) {
    ASSERT_NE(nullptr, response);
    EXPECT_EQ(code, response->status);
    const ReplyDocument reply = ReplyDocument::parse(response->body);
    EXPECT_EQ("commandProgressUpdateResponse", reply.root);
    EXPECT_THAT(reply.below, ElementsAre("response"));
    EXPECT_THAT(reply.response,
                ElementsAre(Pair("code", std::to_string(code)), Pair("message", message)));
  }

  /// A refusal is answered and logged once, and nothing else happens.
  void expectRefused(const std::unique_ptr<Response>& response, const std::string& message) {
    expectReply(response, 505, message);
    EXPECT_THAT(log_.lines(), ElementsAre(LogLine{6, "errorResponse", message}));
    EXPECT_THAT(svc_.sent(), IsEmpty());
  }

  void expectOneCallWithoutWait() {
    ASSERT_EQ(1U, svc_.sent().size());
    EXPECT_FALSE(svc_.sent()[0].responseRequired);
    EXPECT_EQ(4, static_cast<int>(svc_.sent()[0].priority));
    EXPECT_FALSE(svc_.sent()[0].cookie.empty());
    EXPECT_EQ(0U, handler_.knownCookies());
  }

  RecordingSvc svc_;
  LogCapture log_;
  MsgHandler handler_;
};

std::tuple<base::String, std::uint8_t, std::uint32_t, std::uint8_t, std::uint32_t, base::String>
progressOf(const char* appInstanceId, std::uint8_t command, std::uint32_t progress,
           std::uint8_t status, std::uint32_t code, const char* errorDesc) {
  return {appInstanceId, command, progress, status, code, errorDesc};
}

std::tuple<std::uint64_t, std::uint32_t, std::uint32_t, base::String, std::uint32_t, std::uint8_t,
           base::String>
upgradeOf(std::uint32_t slot, std::uint32_t progress, std::uint8_t status) {
  return {0, 1, slot, "99.1.2.3", progress, status, "nox-os"};
}

// ----- What reaches the engine ------------------------------------------------------------------

TEST_F(CommandProgress, OfAnInstance_ReachesTheEngineWithoutAWait) {
  expectReply(handle({}), 100, "OK");
  EXPECT_THAT(svc_.calls<UpdateProgressMe>(), ElementsAre(progressOf("17", 4, 50, 1, 102, "none")));
  expectOneCallWithoutWait();
  EXPECT_THAT(
      log_.lines(),
      ElementsAre(LogLine{5, "AG_commandProgressUpdateReqCb",
                          "Triggering UpgradeProgress method for slot = 3 , operCmd = startApp, "
                          "percentage = 50, MesgId =  id-1, appInstanceId = 17"},
                  LogLine{1, "AG_commandProgressUpdateReqCb",
                          "invokeZanDmeServiceorchapiUpdateProgress for slot : 3, Message ID : "
                          "id-1"}));
}

TEST_F(CommandProgress, OfADiskFormat_ReachesTheEngineWithoutAWait) {
  expectReply(handle(Sent().with("appInstanceId", "-1").with("operCmd", "formatDisk")), 100, "OK");
  EXPECT_THAT(svc_.calls<UpdateDiskFormatStatusMe>(), ElementsAre(std::tuple(3U, std::uint8_t{1})));
  expectOneCallWithoutWait();
  EXPECT_THAT(
      log_.lines(),
      ElementsAre(LogLine{5, "AG_commandProgressUpdateReqCb",
                          "Triggering UpgradeProgress method for slot = 3 , operCmd = formatDisk, "
                          "percentage = 50, MesgId =  id-1, appInstanceId = -1"},
                  LogLine{1, "AG_commandProgressUpdateReqCb",
                          "invokeZanDmeServiceorchapiUpdateDiskFormatStatus for slot : 3, Message "
                          "ID : id-1"}));
}

TEST_F(CommandProgress, OfAnImageUpload_ReachesTheEngineWithoutAWait) {
  expectReply(handle(Sent().with("appInstanceId", "-1").with("operCmd", "uploadPlatformImage")),
              100, "OK");
  EXPECT_THAT(svc_.calls<OsControllerUpgradeProgressMe>(), ElementsAre(upgradeOf(3, 50, 3)));
  expectOneCallWithoutWait();
  EXPECT_THAT(
      log_.lines(),
      ElementsAre(LogLine{5, "AG_commandProgressUpdateReqCb",
                          "Triggering UpgradeProgress method for slot = 3 , operCmd = "
                          "uploadPlatformImage, percentage = 50, MesgId =  id-1, appInstanceId = "
                          "-1"},
                  LogLine{1, "AG_commandProgressUpdateReqCb",
                          "invokeZanDmeServerapiOsControllerUpgradeProgress for slot : 3, Message "
                          "ID : id-1"}));
}

class AppCommandsOfThePlatform : public CommandProgress,
                                 public testing::WithParamInterface<const char*> {};

TEST_P(AppCommandsOfThePlatform, Report_ReachesNoMethodAndIsAcknowledged) {
  expectReply(handle(Sent().with("appInstanceId", "-1").with("operCmd", GetParam())), 100, "OK");
  EXPECT_THAT(svc_.sent(), IsEmpty());
  EXPECT_THAT(log_.lines(),
              ElementsAre(LogLine{5, "AG_commandProgressUpdateReqCb",
                                  std::string("Triggering UpgradeProgress method for slot = 3 , "
                                              "operCmd = ") +
                                      GetParam() +
                                      ", percentage = 50, MesgId =  id-1, appInstanceId = -1"}));
}

INSTANTIATE_TEST_SUITE_P(All, AppCommandsOfThePlatform,
                         testing::Values("installApp", "uninstallApp", "upgradeApp", "startApp",
                                         "stopApp"));

TEST_F(CommandProgress, Calls_AreAnnouncedBeforeTheyAreMade) {
  std::size_t announced = 0;
  svc_.onSend([&](const RecordingSvc::Sent&) { announced = log_.lines().size(); });
  for (const char* command : {"formatDisk", "uploadPlatformImage"}) {
    handle(Sent().with("appInstanceId", "-1").with("operCmd", command));
    EXPECT_EQ(2U, std::exchange(announced, 0)) << command;
  }
  handle({});
  EXPECT_EQ(2U, announced);
}

TEST_F(CommandProgress, EachCall_HasItsOwnCookie) {
  handle({});
  handle({});
  ASSERT_EQ(2U, svc_.sent().size());
  EXPECT_NE(svc_.sent()[0].cookie, svc_.sent()[1].cookie);
}

TEST_F(CommandProgress, NegativeSlot_IsPassedOn) {
  handle(Sent().with("appInstanceId", "-1").with("operCmd", "formatDisk"), -1);
  EXPECT_THAT(svc_.calls<UpdateDiskFormatStatusMe>(),
              ElementsAre(std::tuple(4294967295U, std::uint8_t{1})));
  handle(Sent().with("appInstanceId", "-1").with("operCmd", "uploadPlatformImage"), -1);
  EXPECT_THAT(svc_.calls<OsControllerUpgradeProgressMe>(),
              ElementsAre(upgradeOf(4294967295U, 50, 3)));
  EXPECT_TRUE(log_.contains(5,
                            "Triggering UpgradeProgress method for slot = -1 , operCmd = "
                            "uploadPlatformImage, percentage = 50, MesgId =  id-1, appInstanceId = "
                            "-1"));
}

// ----- Words and numbers ------------------------------------------------------------------------

struct CommandWord {
  const char* sent;
  std::uint8_t code;
  const char* stripped;
};

class CommandWords : public CommandProgress, public testing::WithParamInterface<CommandWord> {};

TEST_P(CommandWords, OfAnInstance_TravelAsTheirCode) {
  handle(Sent().with("operCmd", GetParam().sent));
  EXPECT_THAT(svc_.calls<UpdateProgressMe>(),
              ElementsAre(progressOf("17", GetParam().code, 50, 1, 102, "none")));
  EXPECT_TRUE(log_.contains(5, std::string("Triggering UpgradeProgress method for slot = 3 , "
                                           "operCmd = ") +
                                   GetParam().stripped +
                                   ", percentage = 50, MesgId =  id-1, appInstanceId = 17"));
}

INSTANTIATE_TEST_SUITE_P(
    All, CommandWords,
    testing::Values(
        CommandWord{"installApp", 1, "installApp"}, CommandWord{"uninstallApp", 2, "uninstallApp"},
        CommandWord{"upgradeApp", 3, "upgradeApp"}, CommandWord{"startApp", 4, "startApp"},
        CommandWord{"stopApp", 5, "stopApp"}, CommandWord{"formatDisk", 6, "formatDisk"},
        CommandWord{"uploadPlatformImage", 7, "uploadPlatformImage"},
        CommandWord{"app.installApp", 1, "installApp"}, CommandWord{".stopApp", 5, "stopApp"},
        CommandWord{"  app.stopApp\n", 5, "stopApp"}, CommandWord{"a b.stopApp", 5, "stopApp"}));

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

struct StateWord {
  const char* sent;
  std::uint8_t ofProgress;
  std::uint8_t ofDiskFormat;
};

class StateWords : public CommandProgress, public testing::WithParamInterface<StateWord> {};

TEST_P(StateWords, OfAnInstanceAndOfADiskFormat_AreNumberedApart) {
  const Sent report = Sent().with("operCmd", "formatDisk").with("operStatus", GetParam().sent);
  handle(report);
  EXPECT_THAT(svc_.calls<UpdateProgressMe>(),
              ElementsAre(progressOf("17", 6, 50, GetParam().ofProgress, 102, "none")));
  handle(report.with("appInstanceId", "-1"));
  EXPECT_THAT(svc_.calls<UpdateDiskFormatStatusMe>(),
              ElementsAre(std::tuple(3U, GetParam().ofDiskFormat)));
}

INSTANTIATE_TEST_SUITE_P(All, StateWords,
                         testing::Values(StateWord{"running", 1, 1}, StateWord{"failed", 2, 3},
                                         StateWord{"succeeded", 3, 2},
                                         StateWord{"\t failed ", 2, 3}));

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

struct Upload {
  const char* code;
  const char* progress;
  std::uint8_t status;
};

class Uploads : public CommandProgress, public testing::WithParamInterface<Upload> {};

TEST_P(Uploads, CodeAndProgress_MakeTheUpgradeStatus) {
  for (const char* word : {"running", "failed", "succeeded"}) {
    handle(Sent()
               .with("appInstanceId", "-1")
               .with("operCmd", "app.uploadPlatformImage")
               .with("operStatus", word)
               .with("code", GetParam().code)
               .with("operProgress", GetParam().progress));
  }
  const auto calls = svc_.calls<OsControllerUpgradeProgressMe>();
  ASSERT_EQ(3U, calls.size());
  for (const auto& call : calls) {
    EXPECT_EQ(GetParam().status, std::get<5>(call));
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, Uploads,
    testing::Values(Upload{"100", "100", 2}, Upload{"100", "101", 2}, Upload{"100", "99", 3},
                    Upload{"100", "-5", 3}, Upload{"100", "", 3}, Upload{"100", "4294967396", 2},
                    Upload{"509", "100", 6}, Upload{"509", "0", 6}, Upload{"506", "100", 5},
                    Upload{"506", "7", 5}, Upload{"503", "100", 7}, Upload{"503", "x", 7},
                    Upload{"102", "100", 3}, Upload{"0", "100", 3}, Upload{"508", "100", 3},
                    Upload{"101", "100", 3}, Upload{"x", "100", 3}, Upload{" 100x ", "100%", 2},
                    Upload{"4294967396", "100", 3}, Upload{"-100", "100", 3}));

struct Number {
  const char* sent;
  std::uint32_t forwarded;
};

class Numbers : public CommandProgress, public testing::WithParamInterface<Number> {};

TEST_P(Numbers, ProgressAndCode_AreForwardedWithoutACheck) {
  handle(Sent().with("operProgress", GetParam().sent).with("code", "1"));
  handle(Sent().with("operProgress", "1").with("code", GetParam().sent));
  EXPECT_THAT(svc_.calls<UpdateProgressMe>(),
              ElementsAre(progressOf("17", 4, GetParam().forwarded, 1, 1, "none"),
                          progressOf("17", 4, 1, 1, GetParam().forwarded, "none")));
  handle(Sent()
             .with("appInstanceId", "-1")
             .with("operCmd", "uploadPlatformImage")
             .with("operProgress", GetParam().sent));
  EXPECT_THAT(svc_.calls<OsControllerUpgradeProgressMe>(),
              ElementsAre(upgradeOf(3, GetParam().forwarded, 3)));
}

INSTANTIATE_TEST_SUITE_P(All, Numbers,
                         testing::Values(Number{"0", 0}, Number{"099", 99}, Number{"abc", 0},
                                         Number{"12abc", 12}, Number{" +5 ", 5}, Number{"1 2", 1},
                                         Number{"0x10", 0}, Number{"-1", 4294967295U},
                                         Number{"4294967295", 4294967295U}, Number{"4294967297", 1},
                                         Number{"99999999999999999999", 4294967295U}));

TEST_F(CommandProgress, EmptyProgress_IsZero) {
  expectReply(handle(Sent().with("operProgress", " ")), 100, "OK");
  EXPECT_THAT(svc_.calls<UpdateProgressMe>(), ElementsAre(progressOf("17", 4, 0, 1, 102, "none")));
  EXPECT_TRUE(log_.contains(5,
                            "Triggering UpgradeProgress method for slot = 3 , operCmd = startApp, "
                            "percentage = , MesgId =  id-1, appInstanceId = 17"));
}

struct Instance {
  const char* sent;
  const char* forwarded;
};

class Instances : public CommandProgress, public testing::WithParamInterface<Instance> {};

TEST_P(Instances, OtherThanThePlatform_AreForwardedAsText) {
  handle(Sent().with("appInstanceId", GetParam().sent).with("operCmd", "formatDisk"));
  EXPECT_THAT(svc_.calls<UpdateProgressMe>(),
              ElementsAre(progressOf(GetParam().forwarded, 6, 50, 1, 102, "none")));
  EXPECT_EQ(1U, svc_.sent().size());
}

INSTANTIATE_TEST_SUITE_P(All, Instances,
                         testing::Values(Instance{" 17 ", "17"}, Instance{"0", "0"},
                                         Instance{"abc", "abc"}, Instance{"1", "1"},
                                         Instance{"-2", "-2"}, Instance{"4294967295", "4294967295"},
                                         Instance{"18446744073709551615", "18446744073709551615"},
                                         Instance{"- 1", "- 1"}));

class Platforms : public CommandProgress, public testing::WithParamInterface<const char*> {};

TEST_P(Platforms, MinusOne_IsThePlatform) {
  handle(Sent().with("appInstanceId", GetParam()).with("operCmd", "formatDisk"));
  EXPECT_EQ(1U, svc_.calls<UpdateDiskFormatStatusMe>().size());
  EXPECT_EQ(1U, svc_.sent().size());
}

INSTANTIATE_TEST_SUITE_P(All, Platforms, testing::Values("-1", " -1\n", "-01", "-1x"));

// ----- The error text ---------------------------------------------------------------------------

TEST_F(CommandProgress, ErrorText_TravelsUntrimmed) {
  handle(Sent().with("errorDesc", "  no &lt;disk&gt; left%s \n"));
  EXPECT_THAT(svc_.calls<UpdateProgressMe>(),
              ElementsAre(progressOf("17", 4, 50, 1, 102, "  no <disk> left%s \n")));
}

TEST_F(CommandProgress, NoErrorText_IsLoggedAndSentEmpty) {
  expectReply(handle(Sent().without("errorDesc")), 100, "OK");
  EXPECT_THAT(svc_.calls<UpdateProgressMe>(), ElementsAre(progressOf("17", 4, 50, 1, 102, "")));
  ASSERT_EQ(3U, log_.lines().size());
  EXPECT_EQ((LogLine{5, "missingTagError",
                     "No <errorDesc> tag found in the commandProgressUpdate request"}),
            log_.lines().front());
}

TEST_F(CommandProgress, EmptyErrorText_IsNotMissing) {
  handle(Sent().with("errorDesc", ""));
  EXPECT_THAT(svc_.calls<UpdateProgressMe>(), ElementsAre(progressOf("17", 4, 50, 1, 102, "")));
  EXPECT_EQ(2U, log_.lines().size());
}

// ----- Refusals ---------------------------------------------------------------------------------

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

// ----- The reply --------------------------------------------------------------------------------

class Acks : public CommandProgress, public testing::WithParamInterface<const char*> {};

TEST_P(Acks, Wanted_IsGiven) {
  expectReply(handle(Sent().with("ack", GetParam())), 100, "OK");
  EXPECT_EQ(1U, svc_.sent().size());
}

INSTANTIATE_TEST_SUITE_P(All, Acks, testing::Values("true", "TRUE", "True", "tRuE", " true\n"));

class NoAcks : public CommandProgress, public testing::WithParamInterface<const char*> {};

TEST_P(NoAcks, NotWanted_ThereIsNoReplyAndTheEngineIsTold) {
  EXPECT_EQ(nullptr, handle(Sent().with("ack", GetParam())));
  EXPECT_EQ(1U, svc_.sent().size());
}

INSTANTIATE_TEST_SUITE_P(All, NoAcks,
                         testing::Values("no", "false", "", "1", "yes", "true.", "t rue"));

TEST_F(CommandProgress, CallFails_ItPassesThrough) {
  svc_.onSend([](const RecordingSvc::Sent&) { throw std::runtime_error("no memory"); });
  EXPECT_THROW(handle({}), std::runtime_error);
}

}  // namespace
}  // namespace zan_serviceOrchAG
