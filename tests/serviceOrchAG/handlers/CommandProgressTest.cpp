#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>

#include "tests/serviceOrchAG/handlers/CommandProgressHarness.h"

namespace zan_serviceOrchAG::command_progress_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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
}  // namespace zan_serviceOrchAG::command_progress_test
