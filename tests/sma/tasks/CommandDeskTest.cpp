#include "sma/tasks/CommandDesk.h"

#include <gmock/gmock.h>

#include "tests/sma/tasks/CommandDeskHarness.h"

namespace sma {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CommandDeskTest : public CommandDeskHarness {};

TEST_F(CommandDeskTest, LifeOfAnInstance_ShowsInThePlatform) {
  auto desk = this->desk();
  EXPECT_EQ(ask(desk, "installApp", installDocument("a1", "/pkg/fw-1.2.pkg")), "100 OK");
  EXPECT_EQ(shown("a1"), "absent");
  playFor(seconds(3));
  EXPECT_EQ(shown("a1"), "1.2 stopped");
  EXPECT_EQ(ask(desk, "startApp", startDocument("a1")), "100 OK");
  playFor(seconds(3));
  EXPECT_EQ(shown("a1"), "1.2 running");
  EXPECT_EQ(ask(desk, "upgradeApp", upgradeDocument("a1", "/pkg/fw-2.0.pkg")), "100 OK");
  playFor(milliseconds(1999));
  EXPECT_EQ(shown("a1"), "1.2 running");
  playFor(seconds(1));
  EXPECT_EQ(shown("a1"), "2.0 running");
  EXPECT_EQ(ask(desk, "stopApp", appDocument("stopApp", "a1")), "100 OK");
  playFor(seconds(3));
  EXPECT_EQ(shown("a1"), "2.0 stopped");
  EXPECT_EQ(ask(desk, "uninstallApp", appDocument("uninstallApp", "a1")), "100 OK");
  playFor(seconds(3));
  EXPECT_EQ(shown("a1"), "absent");
  EXPECT_THAT(ended_,
              ElementsAre("installApp", "startApp", "upgradeApp", "stopApp", "uninstallApp"));
}

TEST_F(CommandDeskTest, Work_IsReportedFromTheStartToTheEnd) {
  auto desk = this->desk();
  ask(desk, "stopApp", appDocument("stopApp", "slot3-app1"));
  playFor(seconds(3));
  EXPECT_THAT(said_,
              ElementsAre("stopApp slot3-app1 0 running 100", "stopApp slot3-app1 25 running 100",
                          "stopApp slot3-app1 50 running 100", "stopApp slot3-app1 75 running 100",
                          "stopApp slot3-app1 100 succeeded 100"));
}

TEST_F(CommandDeskTest, InstalledAgain_HasNothingOfItsFormerLife) {
  auto desk = this->desk();
  platform_.change({.id = "a1", .version = "0.1", .external = true, .hotfixes = "HF-1"});
  platform_.change({.id = "a1", .installed = false});
  ask(desk, "installApp", installDocument("a1", "/pkg/a1.bin"));
  playFor(seconds(3));
  const AppInstance app = platform_.apps().back();
  EXPECT_EQ(shown("a1"), "1.0 stopped");
  EXPECT_EQ(app.hotfixes, "");
  EXPECT_FALSE(app.external);
}

TEST_F(CommandDeskTest, Refusals_AreRepliedToAndReported) {
  auto desk = this->desk();
  platform_.change({.id = "slot3-app2", .running = false});
  EXPECT_EQ(ask(desk, "installApp", installDocument("slot3-app1", "/p")),
            "508 Instance slot3-app1 is installed already");
  EXPECT_EQ(ask(desk, "startApp", startDocument("slot3-app1")),
            "508 Instance slot3-app1 runs already");
  EXPECT_EQ(ask(desk, "stopApp", appDocument("stopApp", "slot3-app2")),
            "508 Instance slot3-app2 does not run");
  EXPECT_EQ(ask(desk, "uninstallApp", appDocument("uninstallApp", "slot3-app1")),
            "508 Instance slot3-app1 runs; stop it first");
  EXPECT_EQ(ask(desk, "upgradeApp", upgradeDocument("a9", "/p")),
            "504 Instance a9 is not installed here");
  EXPECT_EQ(ask(desk, "clearLogData", appDocument("clearLogData", "a9")),
            "504 Instance a9 is not installed here");
  playFor(seconds(3));
  EXPECT_THAT(
      said_,
      ElementsAre("installApp slot3-app1 0 failed 508 Instance slot3-app1 is installed already",
                  "startApp slot3-app1 0 failed 508 Instance slot3-app1 runs already",
                  "stopApp slot3-app2 0 failed 508 Instance slot3-app2 does not run",
                  "uninstallApp slot3-app1 0 failed 508 Instance slot3-app1 runs; stop it first",
                  "upgradeApp a9 0 failed 504 Instance a9 is not installed here"));
  EXPECT_THAT(desk.executions(), IsEmpty());
}

TEST_F(CommandDeskTest, WrongDocument_IsReportedWhereItNamesAnInstance) {
  auto desk = this->desk();
  EXPECT_EQ(ask(desk, "upgradeApp",
                "<upgradeAppRequest><appInstanceId>slot3-app1</appInstanceId></upgradeAppRequest>"),
            "505 No &lt;url&gt; tag found in the upgradeApp request");
  EXPECT_EQ(ask(desk, "stopApp", "<stopAppRequest/>"),
            "505 No &lt;appInstanceId&gt; tag found in the stopApp request");
  EXPECT_EQ(ask(desk, "reboot", "<x/>"), "500 Invalid command");
  playFor(seconds(1));
  EXPECT_THAT(said_, ElementsAre("upgradeApp slot3-app1 0 failed 505 No <url> tag found in the "
                                 "upgradeApp request"));
}

TEST_F(CommandDeskTest, BusyInstance_TakesNoSecondCommand) {
  auto desk = this->desk();
  EXPECT_EQ(ask(desk, "stopApp", appDocument("stopApp", "slot3-app1")), "100 OK");
  EXPECT_EQ(ask(desk, "stopApp", appDocument("stopApp", "slot3-app1")),
            "507 A command is under way on instance slot3-app1");
  EXPECT_EQ(ask(desk, "upgradeApp", upgradeDocument("slot3-app1", "/p")),
            "507 A command is under way on instance slot3-app1");
  playFor(seconds(3));
  // The second stop is not reported as failed: that would be the end of the first.
  EXPECT_EQ(std::count_if(said_.begin(), said_.end(),
                          [](const std::string& line) { return line.starts_with("stopApp"); }),
            5);
  EXPECT_THAT(said_, testing::Contains("upgradeApp slot3-app1 0 failed 507 A command is under way "
                                       "on instance slot3-app1"));
  EXPECT_EQ(shown("slot3-app1"), "1.1 stopped");
}

TEST_F(CommandDeskTest, OtherInstances_WorkAtTheSameTime) {
  auto desk = this->desk();
  EXPECT_EQ(ask(desk, "stopApp", appDocument("stopApp", "slot3-app1")), "100 OK");
  EXPECT_EQ(ask(desk, "stopApp", appDocument("stopApp", "slot3-app2")), "100 OK");
  EXPECT_EQ(ask(desk, "installApp", installDocument("a1", "/p")), "100 OK");
  playFor(milliseconds(2000));
  EXPECT_EQ(shown("slot3-app1"), "1.1 stopped");
  EXPECT_EQ(shown("slot3-app2"), "1.2 stopped");
  EXPECT_EQ(shown("a1"), "1.0 stopped");
}

TEST_F(CommandDeskTest, FormatUnderWay_ExcludesAndIsExcluded) {
  auto desk = this->desk();
  const std::string format = "<formatDiskRequest><token>t2</token></formatDiskRequest>";
  ask(desk, "stopApp", appDocument("stopApp", "slot3-app1"));
  EXPECT_EQ(ask(desk, "formatDisk", format),
            "507 Commands are under way; format the disk after them");
  playFor(seconds(3));
  EXPECT_EQ(ask(desk, "formatDisk", format), "100 OK");
  EXPECT_EQ(ask(desk, "installApp", installDocument("a1", "/p")),
            "507 The platform is at work; send the command again later");
  EXPECT_EQ(ask(desk, "platformLogLevel.set",
                "<platformLogLevelSetRequest><logLevel>error</logLevel>"
                "</platformLogLevelSetRequest>"),
            "100 OK");
  said_.clear();
  playFor(seconds(3));
  EXPECT_THAT(said_, testing::Contains("formatDisk -1 100 succeeded 100"));
}

TEST_F(CommandDeskTest, Settings_AreKept) {
  auto desk = this->desk();
  EXPECT_EQ(ask(desk, "platformLogLevel.set",
                "<platformLogLevelSetRequest><logLevel>warning</logLevel>"
                "</platformLogLevelSetRequest>"),
            "100 OK");
  EXPECT_EQ(desk.logLevel(), "warning");
  EXPECT_EQ(ask(desk, "settings.update",
                "<platformSettingsUpdate><timezone>CET-1CEST</timezone><logLevel>debug</logLevel>"
                "</platformSettingsUpdate>"),
            "100 OK");
  EXPECT_EQ(desk.logLevel(), "debug");
  EXPECT_EQ(desk.timeZone(), "CET-1CEST");
  ask(desk, "clearLogData", "<clearLogDataRequest/>");
  ask(desk, "clearLogData", "<clearLogDataRequest/>");
  ask(desk, "clearLogData", appDocument("clearLogData", "slot3-app1"));
  EXPECT_THAT(desk.clearedLogs(),
              ElementsAre(testing::Pair("", 2U), testing::Pair("slot3-app1", 1U)));
  playFor(seconds(3));
  EXPECT_THAT(said_, IsEmpty());
}

TEST_F(CommandDeskTest, SameIdOnOneConnection_IsAnsweredAgainAndCarriedOutOnce) {
  auto desk = this->desk();
  const std::string stop = appDocument("stopApp", "slot3-app1");
  send(desk, "stopApp", stop, "5", "gateway");
  const auto first = desk.replies(now_);
  playFor(seconds(3));
  send(desk, "stopApp", stop, "5", "gateway");
  const auto second = desk.replies(now_);
  ASSERT_EQ(first.size(), 1U);
  ASSERT_EQ(second.size(), 1U);
  EXPECT_EQ(first[0].message.parts(), second[0].message.parts());
  EXPECT_THAT(desk.executions(),
              ElementsAre(testing::Pair(testing::Pair("stopApp", "slot3-app1"), 1U)));
}

TEST_F(CommandDeskTest, SameIdOnAnotherConnection_IsAnotherCommand) {
  auto desk = this->desk();
  send(desk, "clearLogData", "<clearLogDataRequest/>", "1", "gateway");
  send(desk, "clearLogData", "<clearLogDataRequest/>", "1", "gateway after a restart");
  EXPECT_THAT(desk.executions(), ElementsAre(testing::Pair(testing::Pair("clearLogData", ""), 2U)));
}

TEST_F(CommandDeskTest, MessageOfOtherParts_GetsNoAnswer) {
  auto desk = this->desk();
  desk.take("gateway", msglyr::Message(4), now_);
  desk.take("gateway", msglyr::Message(6), now_);
  EXPECT_THAT(desk.replies(now_), IsEmpty());
  EXPECT_EQ(desk.received(), 0U);
}

TEST_F(CommandDeskTest, FailChance_MakesWorkFailAndChangeNothing) {
  auto desk = this->desk({.jitter = 0, .failChance = 1});
  EXPECT_EQ(ask(desk, "stopApp", appDocument("stopApp", "slot3-app1")), "100 OK");
  playFor(seconds(3));
  EXPECT_EQ(said_.back(), "stopApp slot3-app1 75 failed 508 stopApp ended with exit status 1");
  EXPECT_EQ(shown("slot3-app1"), "1.1 running");
}

TEST_F(CommandDeskTest, Jitter_MakesTimesDifferWithinBoundsAndEqualForEqualSeeds) {
  std::vector<milliseconds> times;
  for (const std::uint64_t seed : {1U, 2U, 1U}) {
    Reporter reporter({}, platform_, now_);
    CommandDesk desk({.time = seconds(4), .jitter = 0.5, .seed = seed}, platform_, reporter);
    send(desk, "stopApp", appDocument("stopApp", "slot3-app1"), "1", "gateway");
    auto end = now_;
    while (!reporter.isIdle()) {
      end = reporter.due();
      reporter.next(end);
    }
    platform_.change({.id = "slot3-app1", .running = true});
    times.push_back(std::chrono::duration_cast<milliseconds>(end - now_));
    EXPECT_GE(times.back(), milliseconds(1990));
    EXPECT_LE(times.back(), milliseconds(6000));
  }
  EXPECT_EQ(times[0], times[2]);
  EXPECT_NE(times[0], times[1]);
}

}  // namespace
}  // namespace sma
