#include "framework/base/ChassisFile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace base {
namespace {

std::string errorOf(const std::string& text) {
  const auto parsed = parseChassisText(text, "c.toml");
  return parsed ? "accepted" : parsed.error();
}

TEST(ChassisFile, WholeDescription_IsRead) {
  const auto chassis = parseChassisText(
      "[chassis]\nid = 2\nname = \"rack 4\"\nmodel = \"standard\"\nserial = \"JX2301\"\n"
      "[[slot]]\nnumber = 3\nname = \"right\"\nserial = \"B3\"\nmodel = \"b1\"\n[[slot]]\nnumber = "
      "1\n",
      "c.toml");
  ASSERT_TRUE(chassis) << chassis.error();
  EXPECT_EQ(chassis->id, 2u);
  EXPECT_EQ(chassis->name, "rack 4");
  EXPECT_EQ(chassis->model, "standard");
  EXPECT_EQ(chassis->serial, "JX2301");
  ASSERT_EQ(chassis->slots.size(), 2u);
  EXPECT_EQ(chassis->slots[0].number, 1u);
  EXPECT_EQ(chassis->slots[0].name, "");
  EXPECT_EQ(chassis->slots[1].number, 3u);
  EXPECT_EQ(chassis->slots[1].name, "right");
  EXPECT_EQ(chassis->slots[1].serial, "B3");
  EXPECT_EQ(chassis->slots[1].model, "b1");
  EXPECT_EQ(chassis->slots[0].serial, "");
}

TEST(ChassisFile, SlotsOnly_HasTheDefaultChassis) {
  const auto chassis = parseChassisText("[[slot]]\nnumber = 16384\n", "c.toml");
  ASSERT_TRUE(chassis) << chassis.error();
  EXPECT_EQ(chassis->id, 1u);
  EXPECT_EQ(chassis->slots[0].number, 16384u);
}

TEST(ChassisFile, Mistakes_AreNamedWithTheirLine) {
  const struct {
    const char* text;
    const char* error;
  } kCases[] = {
      {"", "c.toml: no [[slot]] is described"},
      {"[chassis]\nid = 1\n", "c.toml: no [[slot]] is described"},
      {"[[slot]]\nnumber = 0\n", "c.toml:2: 'number' must be a number from 1 to 16384"},
      {"[[slot]]\nnumber = 16385\n", "c.toml:2: 'number' must be a number from 1 to 16384"},
      {"[[slot]]\nnumber = 1.0\n", "c.toml:2: 'number' must be a number from 1 to 16384"},
      {"[[slot]]\nnumber = \"1\"\n", "c.toml:2: 'number' must be a number from 1 to 16384"},
      {"[[slot]]\nnumber = -1\n", "c.toml:2: 'number' must be a number from 1 to 16384"},
      {"[[slot]]\nname = \"a\"\n", "c.toml:1: a slot has no 'number'"},
      {"[[slot]]\nnumber = 1\n[[slot]]\nnumber = 1\n", "c.toml:3: slot 1 is described twice"},
      {"slot = 3\n", "c.toml:1: 'slot' must be given as [[slot]], once for each slot"},
      {"slot = []\n", "c.toml:1: 'slot' must be given as [[slot]], once for each slot"},
      {"chassis = 3\n", "c.toml:1: 'chassis' must be given as [chassis]"},
      {"[chassis]\nid = 256\n", "c.toml:2: 'id' must be a number from 1 to 255"},
      {"[chassis]\nname = 3\n",
       "c.toml:2: 'name' must be a text of up to 255 bytes without control characters"},
      {"[chassis]\nname = \"a\\nb\"\n",
       "c.toml:2: 'name' must be a text of up to 255 bytes without control characters"},
      {"[chassis]\nnam = \"a\"\n",
       "c.toml:2: unknown key 'nam'; [chassis] has 'id', 'name', 'model', 'serial'"},
      {"[[slot]]\nnumber = 1\nnumer = 1\n",
       "c.toml:3: unknown key 'numer'; [[slot]] has 'number', 'name', 'serial', 'model', 'apps'"},
      {"[[slots]]\nnumber = 1\n", "c.toml:1: unknown key 'slots'; the file has 'chassis', 'slot'"},
  };
  for (const auto& each : kCases) {
    EXPECT_EQ(errorOf(each.text), each.error) << each.text;
  }
}

TEST(ChassisFile, Apps_AreReadWithWhatIsLeftOut) {
  const auto chassis = parseChassisText(
      "[[slot]]\nnumber = 3\napps = [\n"
      "  {id = \"a1\", version = \"1.0\", state = \"started\"},\n"
      "  {id = \"b/2\", state = \"stopped\"},\n  {id = \"c3\"},\n]\n"
      "[[slot]]\nnumber = 4\napps = []\n",
      "c.toml");
  ASSERT_TRUE(chassis) << chassis.error();
  using State = ChassisDescription::App::State;
  const auto& apps = chassis->slots[0].apps;
  ASSERT_EQ(apps.size(), 3u);
  EXPECT_EQ(apps[0].id, "a1");
  EXPECT_EQ(apps[0].version, "1.0");
  EXPECT_EQ(apps[0].state, State::kStarted);
  EXPECT_EQ(apps[1].id, "b/2");
  EXPECT_EQ(apps[1].version, "");
  EXPECT_EQ(apps[1].state, State::kStopped);
  EXPECT_EQ(apps[2].state, State::kAny);
  EXPECT_TRUE(chassis->slots[1].apps.empty());
}

TEST(ChassisFile, MistakesInApps_AreNamedWithTheirLine) {
  const std::string slot = "[[slot]]\nnumber = 1\n";
  std::string many;
  for (int i = 0; i < 257; ++i) {
    many += "{id = \"a" + std::to_string(i) + "\"},";
  }
  const struct {
    std::string text;
    const char* error;
  } kCases[] = {
      {"apps = 3\n", "c.toml:3: 'apps' must be a list of up to 256 apps, each as {id = \"...\"}"},
      {"apps = [" + many + "]\n",
       "c.toml:3: 'apps' must be a list of up to 256 apps, each as {id = \"...\"}"},
      {"apps = [\n\"a1\"]\n", "c.toml:4: an app must be given as {id = \"...\"}"},
      {"apps = [\n{version = \"1\"}]\n", "c.toml:4: an app has no 'id'"},
      {"apps = [{id = \"\"}]\n", "c.toml:3: an app has no 'id'"},
      {"apps = [{id = 7}]\n",
       "c.toml:3: 'id' must be a text of up to 255 bytes without control characters"},
      {"apps = [{id = \"a\", version = 1.0}]\n",
       "c.toml:3: 'version' must be a text of up to 255 bytes without control characters"},
      {"apps = [{id = \"a\", state = \"running\"}]\n",
       "c.toml:3: 'state' must be \"started\" or \"stopped\""},
      {"apps = [{id = \"a\", state = true}]\n",
       "c.toml:3: 'state' must be \"started\" or \"stopped\""},
      {"apps = [{id = \"a\", name = \"b\"}]\n",
       "c.toml:3: unknown key 'name'; an app has 'id', 'version', 'state'"},
      {"apps = [{id = \"a\"}, {id = \"a\"}]\n", "c.toml:1: app 'a' is described twice"},
      {"apps = [{id = \"a\"}]\n[[slot]]\nnumber = 2\napps = [{id = \"a\"}]\n",
       "c.toml:4: app 'a' is described twice"},
  };
  for (const auto& each : kCases) {
    EXPECT_EQ(errorOf(slot + each.text), each.error) << each.text;
  }
}

TEST(ChassisFile, NoToml_FailsOnOneLineWithItsNumber) {
  const std::string error = errorOf("[[slot]]\nnumber = = 1\n");
  EXPECT_TRUE(error.starts_with("c.toml:2: ")) << error;
  EXPECT_EQ(error.find('\n'), std::string::npos);
}

TEST(ChassisFile, MissingFile_FailsNamingItAndTheCause) {
  const auto chassis = readChassisFile("/nonexistent/c.toml");
  ASSERT_FALSE(chassis);
  EXPECT_EQ(chassis.error(), "/nonexistent/c.toml: cannot be read: No such file or directory");
}

TEST(ChassisFile, FileOnDisk_IsReadAndNamedInErrors) {
  char path[] = "/tmp/chassis-test-XXXXXX";
  const int descriptor = ::mkstemp(path);
  ASSERT_GE(descriptor, 0);
  ::close(descriptor);
  std::ofstream(path) << "[[slot]]\nnumber = 7\n";
  const auto chassis = readChassisFile(path);
  std::ofstream(path) << "[[slot]]\n";
  const auto wrong = readChassisFile(path);
  std::ofstream(path) << std::string(1048577, '#');
  const auto large = readChassisFile(path);
  ::unlink(path);
  ASSERT_TRUE(chassis) << chassis.error();
  EXPECT_EQ(chassis->slots[0].number, 7u);
  ASSERT_FALSE(wrong);
  EXPECT_EQ(wrong.error(), std::string(path) + ":1: a slot has no 'number'");
  ASSERT_FALSE(large);
  EXPECT_EQ(large.error(), std::string(path) + ": cannot be read: larger than 1048576 bytes");
}

}  // namespace
}  // namespace base
