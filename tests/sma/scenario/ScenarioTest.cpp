#include "sma/scenario/Scenario.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sma {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST(Scenario, Scripts_AreAppliedToTheirSlotsOnly) {
  const Scenario scenario = Scenario::parse(R"({
    // one blade comes from another chassis
    "blades": [{"slots": "3", "token": "foreign"},
               {"slots": "3-4", "faults": [{"fault": "silence", "at": 1.5, "for": 2}]}]
  })",
                                            "s.json");
  BladeAgent::Settings third;
  third.slot = 3;
  scenario.apply(third);
  EXPECT_EQ(third.membership.token, "foreign");
  ASSERT_EQ(third.events.size(), 1U);
  EXPECT_EQ(third.events[0].at, std::chrono::milliseconds(1500));
  BladeAgent::Settings fifth;
  fifth.slot = 5;
  scenario.apply(fifth);
  EXPECT_EQ(fifth.membership.token, "");
  EXPECT_THAT(fifth.events, IsEmpty());
}

TEST(Scenario, Expectations_FailWithSlotCountAndSpan) {
  const Scenario scenario = Scenario::parse(
      R"({"expect": [{"slots": "3", "state": "registered", "has_token": true,
          "counts": {"beats": {"min": 2}, "unsent": 0}, "statuses": {"511": {"min": 1, "max": 4}}},
          {"slots": "9"}]})",
      "s.json");
  BladeAgent::Settings settings;
  settings.slot = 3;
  const BladeAgent blade(settings, {});
  EXPECT_THAT(
      scenario.failures({&blade}),
      ElementsAre("slot 3: is unregistered, expected registered",
                  "slot 3: holds no token, expected one", "slot 3: beats is 0, expected at least 2",
                  "slot 3: replies 511 are 0, expected 1 to 4",
                  "slot 9: is expected something of, but not simulated"));
}

TEST(Scenario, CommandsAndTheirFaults_AreAppliedToTheirSlots) {
  const Scenario scenario = Scenario::parse(R"({
    "blades": [{"slots": "3", "commands": {"time": 0.5, "jitter": 0, "fail_chance": 1},
                "command_faults": [
                  {"kind": "lateReply", "times": 2, "command": "stopApp", "delayMs": 700},
                  {"kind": "die", "moment": "reply"}, {"kind": "refuse", "code": 512, "times": 0},
                  {"kind": "stall", "lastsMs": 10}]}]
  })",
                                            "s.json");
  BladeAgent::Settings third;
  third.slot = 3;
  scenario.apply(third);
  EXPECT_EQ(third.commands.time, std::chrono::milliseconds(500));
  EXPECT_EQ(third.commands.jitter, 0);
  EXPECT_EQ(third.commands.failChance, 1);
  const auto& faults = third.commands.faults;
  ASSERT_EQ(faults.size(), 4U);
  EXPECT_EQ(faults[0].kind, FaultKind::LateReply);
  EXPECT_EQ(faults[0].times, 2U);
  EXPECT_EQ(faults[0].command, "stopApp");
  EXPECT_EQ(faults[0].delay, std::chrono::milliseconds(700));
  EXPECT_TRUE(faults[1].beforeReply);
  EXPECT_EQ(faults[1].lasts, std::chrono::milliseconds(1000));
  EXPECT_EQ(faults[1].times, 1U);
  EXPECT_EQ(faults[2].code, 512U);
  EXPECT_EQ(faults[2].times, 0U);
  EXPECT_EQ(faults[3].lasts, std::chrono::milliseconds(10));
  BladeAgent::Settings fourth;
  fourth.slot = 4;
  scenario.apply(fourth);
  EXPECT_THAT(fourth.commands.faults, IsEmpty());
}

TEST(Scenario, CommandsThatWereToBeExecuted_AreMissed) {
  const Scenario scenario = Scenario::parse(
      R"({"expect": [{"slots": "3", "executed": {"stopApp": 1, "installApp": 0}}]})", "s.json");
  BladeAgent::Settings settings;
  settings.slot = 3;
  const BladeAgent blade(settings, {});
  EXPECT_THAT(scenario.failures({&blade}),
              ElementsAre("slot 3: executed stopApp is 0, expected 1"));
}

TEST(Scenario, FulfilledExpectations_AreSilent) {
  const Scenario scenario = Scenario::parse(
      R"({"expect": [{"slots": "3", "state": "unregistered", "counts": {"beats": {"max": 0}}}]})",
      "s.json");
  BladeAgent::Settings settings;
  settings.slot = 3;
  const BladeAgent blade(settings, {});
  EXPECT_THAT(scenario.failures({&blade}), IsEmpty());
}

TEST(Scenario, Apps_AreThoseOfEachSlot) {
  const Scenario scenario = Scenario::parse(
      R"({"blades": [{"slots": "3-4", "apps": [{"app": 2, "version": "2.0", "state": "stopped",
          "admin": "disable", "external": true, "hotfixes": "HF-1"},
          {"app": "mail", "installed": false}]}]})",
      "s.json");
  BladeAgent::Settings settings;
  settings.slot = 4;
  scenario.apply(settings);
  ASSERT_EQ(settings.appChanges.size(), 2U);
  EXPECT_EQ(settings.appChanges[0].id, "slot4-app2");
  EXPECT_EQ(settings.appChanges[0].version, "2.0");
  EXPECT_EQ(settings.appChanges[0].running, false);
  EXPECT_EQ(settings.appChanges[0].enabled, false);
  EXPECT_EQ(settings.appChanges[0].external, true);
  EXPECT_EQ(settings.appChanges[0].hotfixes, "HF-1");
  EXPECT_EQ(settings.appChanges[1].id, "mail");
  EXPECT_EQ(settings.appChanges[1].installed, false);
}

TEST(Scenario, Actions_BecomeEventsWithWhatTheyExpect) {
  const Scenario scenario = Scenario::parse(
      R"({"blades": [{"slots": "3", "actions": [
          {"action": "report", "at": 1, "expect": {"status": 100, "message": "OK"}},
          {"action": "app-failure", "at": 2, "app": 2, "for": 4},
          {"action": "progress", "at": 3, "app": "-1", "command": "formatDisk", "steps": 2,
           "every": 0.5, "ack": false, "ends": "failed", "expect": "no reply"}]}]})",
      "s.json");
  BladeAgent::Settings settings;
  settings.slot = 3;
  scenario.apply(settings);
  ASSERT_EQ(settings.events.size(), 3U);
  EXPECT_EQ(eventName(settings.events[0].what), "report");
  ASSERT_TRUE(settings.events[0].expected);
  EXPECT_EQ(settings.events[0].expected->status, 100U);
  EXPECT_EQ(settings.events[0].expected->message, "OK");
  const auto& failure = std::get<FailApp>(settings.events[1].what);
  EXPECT_EQ(failure.app.in(3), "slot3-app2");
  EXPECT_EQ(failure.lasts, std::chrono::seconds(4));
  EXPECT_FALSE(settings.events[1].expected);
  const auto& run = std::get<RunOperation>(settings.events[2].what);
  EXPECT_EQ(run.app.in(3), "-1");
  EXPECT_EQ(run.plan.command, "formatDisk");
  EXPECT_EQ(run.plan.steps, 2U);
  EXPECT_EQ(run.plan.every, std::chrono::milliseconds(500));
  EXPECT_FALSE(run.plan.ack);
  EXPECT_FALSE(run.plan.succeeds);
  EXPECT_TRUE(settings.events[2].expected->none);
}

TEST(Scenario, EveryOddRequest_CanBePlayed) {
  for (const OddRequest& odd : oddRequests()) {
    const Scenario scenario =
        Scenario::parse(R"({"blades": [{"slots": "3", "faults": [{"fault": ")" +
                            std::string(odd.name) + R"(", "times": 2}]}]})",
                        "s.json");
    const auto& sent = std::get<SendOdd>(scenario.blades.at(0).events.at(0).what);
    EXPECT_EQ(sent.request, &odd);
    EXPECT_EQ(sent.times, 2U);
  }
}

TEST(Scenario, RepliesByKind_AreJudgedByTheirOwnCounts) {
  const Scenario scenario = Scenario::parse(
      R"({"expect": [{"slots": "3", "replies": {"reports": {"100": {"min": 1}},
          "progress": {"100": 0}}}]})",
      "s.json");
  BladeAgent::Settings settings;
  settings.slot = 3;
  const BladeAgent blade(settings, {});
  EXPECT_THAT(scenario.failures({&blade}),
              ElementsAre("slot 3: replies to reports 100 are 0, expected at least 1"));
}

class ScenarioRefused : public testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(ScenarioRefused, BadText_NamesFilePlaceAndCause) {
  const auto [text, piece] = GetParam();
  try {
    Scenario::parse(text, "s.json");
    FAIL() << "took " << text;
  } catch (const std::runtime_error& error) {
    EXPECT_THAT(error.what(), HasSubstr("s.json: "));
    EXPECT_THAT(error.what(), HasSubstr(piece));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ScenarioRefused,
    testing::Values(
        std::pair("{", "parse error"), std::pair("[]", "an object is needed here"),
        std::pair(R"({"blade": []})", "unknown key 'blade'; known are blades, expect"),
        std::pair(R"({"blades": [{}]})", "blades[0]: a text 'slots' is needed"),
        std::pair(R"({"blades": [{"slots": "0"}]})", "blades[0]: slots: '0'"),
        std::pair(R"({"blades": [{"slots": "1", "faults": [{"fault": "sulk"}]}]})",
                  "blades[0].faults[0]: unknown fault 'sulk'"),
        std::pair(R"({"blades": [{"slots": "1", "faults": [{"fault": "silence",
                              "at": -1}]}]})",
                  "'at' is no number of seconds"),
        std::pair(R"({"blades": [{"slots": "1", "actions": [{"action": "sing"}]}]})",
                  "blades[0].actions[0]: unknown action 'sing'; known are report, "
                  "app-failure, progress"),
        std::pair(R"({"blades": [{"slots": "1", "actions": [{"action": "progress",
                              "command": "polishApp"}]}]})",
                  "unknown command 'polishApp'; known are installApp"),
        std::pair(R"({"blades": [{"slots": "1", "actions": [{"action": "progress",
                              "steps": 0}]}]})",
                  "'steps' is no number from 1 to 100"),
        std::pair(R"({"blades": [{"slots": "1", "actions": [{"action": "report",
                              "expect": "something"}]}]})",
                  "blades[0].actions[0].expect: an object is needed here"),
        std::pair(R"({"blades": [{"slots": "1", "apps": [{"state": "running"}]}]})",
                  "blades[0].apps[0]: an 'app' is needed"),
        std::pair(R"({"blades": [{"slots": "1", "apps": [{"app": 1,
                              "state": "started"}]}]})",
                  "unknown state 'started'; known are running, stopped"),
        std::pair(R"({"expect": [{"slots": "1", "replies": {"smiles": {"100": 1}}}]})",
                  "unknown kind of request 'smiles'"),
        std::pair(R"({"blades": [{"slots": "1", "command_faults": [{"kind": "sulk"}]}]})",
                  "blades[0].command_faults[0]: unknown kind 'sulk'; known are ignore"),
        std::pair(R"({"blades": [{"slots": "1", "command_faults": [{"kind": "fail",
                              "lasts": 1}]}]})",
                  "blades[0].command_faults[0]: unknown key 'lasts'"),
        std::pair(R"({"blades": [{"slots": "1", "command_faults": [{"kind": "fail",
                              "command": "polishApp"}]}]})",
                  "unknown command 'polishApp'; known are installApp"),
        std::pair(R"({"blades": [{"slots": "1", "commands": {"fail_chance": 2}}]})",
                  "blades[0].commands: 'fail_chance' is no number from 0 to 1"),
        std::pair(R"({"expect": [{"slots": "1", "executed": {"polishApp": 1}}]})",
                  "unknown command 'polishApp'"),
        std::pair(R"({"expect": [{"slots": "1", "state": "asleep"}]})", "unknown state 'asleep'"),
        std::pair(R"({"expect": [{"slots": "1", "counts": {"smiles": 1}}]})",
                  "unknown count 'smiles'"),
        std::pair(R"({"expect": [{"slots": "1", "statuses": {"ok": 1}}]})",
                  "'ok' is no status code")));

TEST(Scenario, MissingFile_SaysSo) {
  EXPECT_THROW(Scenario::load("no-such-file.json"), std::runtime_error);
}

}  // namespace
}  // namespace sma
