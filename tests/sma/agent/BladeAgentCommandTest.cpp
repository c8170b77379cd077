#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <variant>
#include <vector>

#include "tests/sma/agent/BladeAgentHarness.h"

// Commands to a blade, and what it keeps of them in another life.

namespace sma {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

msglyr::Message command(const std::string& name, const std::string& document) {
  return msglyr::Message(
      std::vector<std::string>{"sma_slot3." + name, "nox-xml:1", "1", "serviceOrchAG", document});
}

msglyr::Message formatCommand() {
  return command("formatDisk", "<formatDiskRequest><token>t2</token></formatDiskRequest>");
}

msglyr::Message stopCommand() {
  return command("stopApp",
                 "<stopAppRequest><appInstanceId>slot3-app1</appInstanceId></stopAppRequest>");
}

TEST_F(BladeAgentTest, ForeignBladeThatIsFormatted_ReportsItAndRegistersWithTheNewToken) {
  auto with = settings();
  with.membership.token = "foreign";
  with.apps = 2;
  with.commands.jitter = 0;
  auto agent = blade(with);
  runUntil(agent, milliseconds(0));
  answer(agent, sent_.back()[2], "511");
  agent.onCommand("gateway", formatCommand(), now_);
  runUntil(agent, milliseconds(1999));
  EXPECT_EQ(replies_.size(), 1U);
  EXPECT_EQ(agent.token(), "foreign");
  EXPECT_EQ(agent.platform().apps().size(), 2U);
  // Its attempts to register go on, and are refused, until the disk is formatted.
  answer(agent, sentAs("serviceOrchAG.register").back()[2], "511");
  runUntil(agent, milliseconds(2000));
  const auto progress = sentAs(kProgress);
  ASSERT_EQ(progress.size(), 5U);
  EXPECT_NE(progress.back()[4].find("<operStatus>succeeded</operStatus>"), std::string::npos);
  EXPECT_EQ(agent.token(), "t2");
  EXPECT_TRUE(agent.platform().apps().empty());
  EXPECT_EQ(sent_.back()[0], "serviceOrchAG.register");
  EXPECT_NE(sent_.back()[4].find("<token>t2</token>"), std::string::npos);
  answer(agent, sent_.back()[2], "100", "t2");
  EXPECT_EQ(agent.state(), BladeAgent::State::Registered);
}

TEST_F(BladeAgentTest, VerdictOnATokenFromBeforeTheFormat_IsPassedOver) {
  auto with = settings();
  with.membership.token = "foreign";
  with.commands.time = milliseconds(100);
  with.commands.jitter = 0;
  auto agent = blade(with);
  runUntil(agent, milliseconds(0));
  const std::string old = sent_.back()[2];
  agent.onCommand("gateway", formatCommand(), now_);
  runUntil(agent, milliseconds(200));
  EXPECT_EQ(agent.token(), "t2");
  answer(agent, old, "511");
  runUntil(agent, milliseconds(200));
  ASSERT_EQ(sentAs("serviceOrchAG.register").size(), 2U);
  EXPECT_NE(sent_.back()[4].find("<token>t2</token>"), std::string::npos);
}

TEST_F(BladeAgentTest, UnregisteredBlade_HoldsProgressOfInstancesBack) {
  auto with = settings();
  with.apps = 1;
  auto agent = blade(with);
  agent.onCommand("gateway", stopCommand(), now_);
  runUntil(agent, seconds(5));
  EXPECT_TRUE(sentAs(kProgress).empty());
  answer(agent, sent_.back()[2], "100", "t1");
  runUntil(agent, seconds(20));
  EXPECT_EQ(sentAs(kProgress).size(), 5U);
}

TEST_F(BladeAgentTest, InstanceChangedByACommand_IsReportedAtOnce) {
  auto with = settings();
  with.apps = 1;
  with.reports.every = seconds(1000);
  with.reports.first = seconds(1000);
  auto agent = blade(with);
  registerWith(agent, "t1");
  agent.onCommand("gateway", stopCommand(), now_);
  runUntil(agent, seconds(4));
  const auto reports = sentAs(kReport);
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_NE(reports[0][4].find("<operStatus>stopped</operStatus>"), std::string::npos);
}

TEST_F(BladeAgentTest, DeathAmidACommand_ForgetsTheWorkAndKeepsTokenAndInstances) {
  auto with = settings();
  with.apps = 2;
  with.commands.jitter = 0;
  with.commands.faults = {{.kind = FaultKind::Die, .lasts = seconds(5)}};
  auto agent = blade(with);
  registerWith(agent, "t1");
  agent.onCommand("gateway", stopCommand(), now_);
  runUntil(agent, milliseconds(1250));
  EXPECT_TRUE(agent.isDead(now_));
  EXPECT_EQ(sentAs(kProgress).size(), 3U);
  const std::size_t before = sent_.size();
  agent.onCommand("gateway", formatCommand(), now_);
  EXPECT_TRUE(agent.commandReplies(now_).empty());
  runUntil(agent, milliseconds(6249));
  EXPECT_EQ(sent_.size(), before);
  runUntil(agent, milliseconds(6250));
  EXPECT_FALSE(agent.isDead(now_));
  ASSERT_EQ(sent_.size(), before + 1);
  EXPECT_EQ(sent_.back()[0], "serviceOrchAG.register");
  EXPECT_NE(sent_.back()[4].find("<token>t1</token>"), std::string::npos);
  answer(agent, sent_.back()[2], "100", "t1");
  runUntil(agent, seconds(20));
  EXPECT_EQ(sentAs(kProgress).size(), 3U);
  EXPECT_EQ(agent.platform().apps().size(), 2U);
  EXPECT_TRUE(agent.platform().apps()[0].running);
  EXPECT_EQ(agent.desk().executed("stopApp"), 1U);
}

TEST_F(BladeAgentTest, WhatItNoted_MakesItTheSameBladeInAnotherLife) {
  std::vector<Memory> notes;
  auto with = settings();
  with.apps = 2;
  with.journal = [&notes](const Memory& memory) {
    notes.push_back(memory);
  };
  {
    auto agent = blade(with);
    registerWith(agent, "t1");
    agent.onCommand("gateway", stopCommand(), now_);
    agent.onCommand("gateway",
                    command("settings.update",
                            "<platformSettingsUpdate><timezone>CET-1</timezone>"
                            "<logLevel>error</logLevel></platformSettingsUpdate>"),
                    now_);
    agent.onCommand("gateway", command("clearLogData", "<clearLogDataRequest/>"), now_);
    runUntil(agent, seconds(4));
  }
  auto agent = blade(with);
  for (const Memory& memory : std::vector<Memory>(notes)) {
    agent.recall(memory);
  }
  EXPECT_EQ(agent.token(), "t1");
  EXPECT_FALSE(agent.platform().apps()[0].running);
  EXPECT_TRUE(agent.platform().apps()[1].running);
  EXPECT_EQ(agent.desk().executed("stopApp"), 1U);
  EXPECT_EQ(agent.desk().timeZone(), "CET-1");
  EXPECT_EQ(agent.desk().logLevel(), "error");
  EXPECT_EQ(agent.desk().clearedLogs().at(""), 1U);
}

TEST_F(BladeAgentTest, BeginOfACommand_IsNotedBeforeItsReply) {
  std::vector<Memory> notes;
  auto with = settings();
  with.apps = 1;
  auto* agentOfJournal = static_cast<BladeAgent*>(nullptr);
  with.journal = [&](const Memory& memory) {
    EXPECT_TRUE(agentOfJournal->commandReplies(now_).empty());
    notes.push_back(memory);
  };
  BladeAgent agent(with, now_);
  agentOfJournal = &agent;
  agent.onCommand("gateway", stopCommand(), now_);
  ASSERT_EQ(notes.size(), 1U);
  EXPECT_EQ(std::get<CommandBegun>(notes[0]).app, "slot3-app1");
  EXPECT_EQ(agent.commandReplies(now_).size(), 1U);
}

TEST_F(BladeAgentTest, FormattedBladeInAnotherLife_HasNoInstances) {
  auto with = settings();
  with.membership.token = "foreign";
  with.apps = 2;
  auto agent = blade(with);
  agent.recall(DiskFormatted{"t2"});
  EXPECT_TRUE(agent.platform().apps().empty());
  EXPECT_EQ(agent.token(), "t2");
}

}  // namespace
}  // namespace sma
