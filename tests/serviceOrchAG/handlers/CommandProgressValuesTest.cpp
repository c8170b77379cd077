#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>

#include "tests/serviceOrchAG/handlers/CommandProgressHarness.h"

// The words and numbers of a report.

namespace zan_serviceOrchAG::command_progress_test {
namespace {

using testing::ElementsAre;

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

}  // namespace
}  // namespace zan_serviceOrchAG::command_progress_test
