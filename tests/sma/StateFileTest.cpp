#include "sma/StateFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace sma {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class StateFileTest : public testing::Test {
 protected:
  ~StateFileTest() override { std::filesystem::remove(path_); }

  std::string content() const {
    std::ifstream file(path_);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
  }
  void write(const std::string& text) const { std::ofstream(path_) << text; }

  std::string causeOfRefusal() const {
    try {
      StateFile file(path_);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "";
  }

  const std::string path_ = testing::TempDir() + "state-" + std::to_string(getpid()) + "-" +
                            testing::UnitTest::GetInstance()->current_test_info()->name();
};

TEST_F(StateFileTest, WhatWasAppended_IsThereWhenItIsOpenedAgain) {
  {
    StateFile file(path_);
    file.append(3, TokenKept{"t1"});
    file.append(4, TokenKept{"t2"});
    file.append(3, CommandBegun{"stopApp", "a1", "7"});
    file.append(3, AppChanged{{.id = "a1", .version = "1.2", .running = false}});
    file.append(3, DiskFormatted{"t3"});
    file.append(3, SettingsKept{"debug", "UTC0"});
    file.append(3, LogsCleared{""});
  }
  StateFile file(path_);
  const auto past = file.take(3);
  ASSERT_EQ(past.size(), 6U);
  EXPECT_EQ(std::get<TokenKept>(past[0]).token, "t1");
  EXPECT_EQ(std::get<CommandBegun>(past[1]).command, "stopApp");
  EXPECT_EQ(std::get<CommandBegun>(past[1]).app, "a1");
  EXPECT_EQ(std::get<CommandBegun>(past[1]).messageId, "7");
  const AppChange& change = std::get<AppChanged>(past[2]).change;
  EXPECT_EQ(change.id, "a1");
  EXPECT_EQ(change.version, "1.2");
  EXPECT_EQ(change.running, false);
  EXPECT_FALSE(change.installed);
  EXPECT_FALSE(change.hotfixes);
  EXPECT_EQ(std::get<DiskFormatted>(past[3]).token, "t3");
  EXPECT_EQ(std::get<SettingsKept>(past[4]).logLevel, "debug");
  EXPECT_EQ(std::get<SettingsKept>(past[4]).timeZone, "UTC0");
  EXPECT_EQ(std::get<LogsCleared>(past[5]).app, "");
  EXPECT_EQ(file.take(4).size(), 1U);
  EXPECT_THAT(file.take(3), IsEmpty());
  EXPECT_THAT(file.take(5), IsEmpty());
}

TEST_F(StateFileTest, EachMemory_IsALineInTheFileAtOnce) {
  StateFile file(path_);
  file.append(3, CommandBegun{"stopApp", "a1", "7"});
  EXPECT_EQ(content(), R"({"app":"a1","command":"stopApp","messageId":"7","slot":3,"what":"began"})"
                       "\n");
}

TEST_F(StateFileTest, LineThatWasNotFinished_IsCutOff) {
  write("{\"slot\":3,\"what\":\"token\",\"token\":\"t1\"}\n{\"slot\":3,\"what\":\"tok");
  {
    StateFile file(path_);
    EXPECT_EQ(file.take(3).size(), 1U);
    file.append(3, TokenKept{"t2"});
  }
  StateFile file(path_);
  EXPECT_EQ(file.take(3).size(), 2U);
}

TEST_F(StateFileTest, BadLine_IsRefusedByItsNumber) {
  const std::string good = R"({"slot":3,"what":"token","token":"t1"})";
  for (const auto& [bad, cause] : std::initializer_list<std::pair<const char*, const char*>>{
           {"no json", "parse error"},
           {"[1]", "an object is needed here"},
           {R"({"what":"token","token":"t1"})", "'slot' is no number from 1 to 65535"},
           {R"({"slot":0,"what":"token","token":"t1"})", "'slot' is no number from 1 to 65535"},
           {R"({"slot":3,"what":"dream"})", "unknown what 'dream'"},
           {R"({"slot":3,"what":"token"})", "a text 'token' is needed"},
           {R"({"slot":3,"what":"app","app":"a","running":1})", "neither true nor false"},
       }) {
    write(good + "\n" + bad + "\n");
    EXPECT_THAT(causeOfRefusal(), HasSubstr(path_ + ":2: ")) << bad;
    EXPECT_THAT(causeOfRefusal(), HasSubstr(cause)) << bad;
  }
}

TEST_F(StateFileTest, FileOfAnotherSimulator_IsRefused) {
  const StateFile file(path_);
  EXPECT_THAT(causeOfRefusal(), HasSubstr("another sma-sim"));
}

TEST_F(StateFileTest, FileThatCannotBeOpened_IsNamed) {
  EXPECT_THROW(StateFile("/no-such-folder/state"), std::runtime_error);
}

TEST_F(StateFileTest, File_IsForItsOwnerOnly) {
  const StateFile file(path_);
  struct stat status {};
  ASSERT_EQ(stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(StateFileTest, TextThatIsNoUtf8_CanBeReadAgain) {
  {
    StateFile file(path_);
    file.append(3, CommandBegun{"stopApp", "a1", "\xff\n"});
  }
  StateFile file(path_);
  EXPECT_EQ(file.take(3).size(), 1U);
}

}  // namespace
}  // namespace sma
