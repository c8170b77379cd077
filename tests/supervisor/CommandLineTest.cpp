#include "supervisor/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace supervisor {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::variant<CommandLine, int> parse(std::vector<std::string> words) {
  words.insert(words.begin(), "zedd");
  std::vector<char*> arguments;
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  return parseCommandLine(static_cast<int>(arguments.size()), arguments.data());
}

TEST(CommandLine, ConfigAndOverrides_AreKeptInOrder) {
  const auto line =
      std::get<CommandLine>(parse({"--config", "z.toml", "--set", "a=1", "--set", "b=2"}));
  EXPECT_EQ(line.config, "z.toml");
  EXPECT_THAT(line.overrides, ElementsAre("a=1", "b=2"));
  EXPECT_FALSE(line.checkConfig);
}

TEST(CommandLine, CheckConfig_IsSeen) {
  EXPECT_TRUE(std::get<CommandLine>(parse({"--config", "z.toml", "--check-config"})).checkConfig);
}

TEST(CommandLine, DumpModel_TakesANameOrNone) {
  const auto dumpOf = [](std::vector<std::string> words) {
    return std::get<CommandLine>(parse(std::move(words))).dumpModel;
  };
  EXPECT_EQ(dumpOf({"--config", "z.toml"}), std::nullopt);
  EXPECT_EQ(dumpOf({"--config", "z.toml", "--dump-model"}), "");
  EXPECT_EQ(dumpOf({"--dump-model", "--config", "z.toml"}), "");
  EXPECT_EQ(dumpOf({"--config", "z.toml", "--dump-model", "sys/chassis-1"}), "sys/chassis-1");
  EXPECT_EQ(dumpOf({"--dump-model", "sys", "--config", "z.toml", "--set", "a=1"}), "sys");
}

TEST(CommandLine, NoConfigOrUnknownFlag_IsWrongUsage) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(std::get<int>(parse({})), 2);
  EXPECT_EQ(std::get<int>(parse({"--config", "z.toml", "--frob"})), 2);
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("--config"));
}

TEST(CommandLine, VersionAndHelp_EndWellAndTellTheKeys) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(std::get<int>(parse({"--version"})), 0);
  EXPECT_EQ(std::get<int>(parse({"--help"})), 0);
  const std::string text = testing::internal::GetCapturedStdout();
  EXPECT_THAT(text, HasSubstr("zedd "));
  EXPECT_THAT(text, HasSubstr("supervisor.state_dir"));
}

}  // namespace
}  // namespace supervisor
