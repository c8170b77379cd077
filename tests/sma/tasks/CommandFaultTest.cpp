#include "sma/tasks/CommandFault.h"

#include <gmock/gmock.h>

#include "tests/sma/tasks/CommandDeskHarness.h"

namespace sma {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

TEST(CommandFaults, Taken_ComeInOrderAsOftenAsTheyMay) {
  CommandFaults faults({{.kind = FaultKind::NoReply, .times = 2, .command = "stopApp"},
                        {.kind = FaultKind::Fail, .times = 1}});
  EXPECT_EQ(faults.take("startApp")->kind, FaultKind::Fail);
  EXPECT_FALSE(faults.take("startApp"));
  EXPECT_EQ(faults.take("stopApp")->kind, FaultKind::NoReply);
  EXPECT_THAT(faults.waiting(), SizeIs(1));
  EXPECT_EQ(faults.take("stopApp")->kind, FaultKind::NoReply);
  EXPECT_FALSE(faults.take("stopApp"));
  EXPECT_THAT(faults.waiting(), IsEmpty());
}

TEST(CommandFaults, WithoutCount_StayUntilCleared) {
  CommandFaults faults({{.kind = FaultKind::NoReply, .times = 0}});
  for (int i = 0; i < 10; ++i) {
    EXPECT_TRUE(faults.take("stopApp"));
  }
  faults.clear();
  EXPECT_FALSE(faults.take("stopApp"));
}

/// A blade whose first command is "stopApp" on an instance that runs, and meets a fault.
class CommandFaultTest : public CommandDeskHarness {
 protected:
  CommandDesk deskWith(const CommandFault& fault) { return desk({.jitter = 0, .faults = {fault}}); }

  void stop(CommandDesk& desk, const std::string& id = "1") {
    send(desk, "stopApp", appDocument("stopApp", kApp), id, "gateway");
  }

  /// Percentage and status of each report.
  std::vector<std::string> progress() const {
    std::vector<std::string> all;
    for (const std::string& line : said_) {
      all.push_back(line.substr(std::string("stopApp slot3-app1 ").size()));
    }
    return all;
  }

  static constexpr const char* kApp = "slot3-app1";
};

TEST_F(CommandFaultTest, Ignore_LosesTheCommand) {
  auto desk = deskWith({.kind = FaultKind::Ignore});
  stop(desk);
  playFor(seconds(3));
  EXPECT_THAT(desk.replies(now_), IsEmpty());
  EXPECT_THAT(said_, IsEmpty());
  EXPECT_THAT(desk.executions(), IsEmpty());
  // Sent again, it is a command like any other.
  stop(desk);
  EXPECT_THAT(desk.replies(now_), SizeIs(1));
}

TEST_F(CommandFaultTest, NoReply_LosesTheReplyOnly) {
  auto desk = deskWith({.kind = FaultKind::NoReply});
  stop(desk);
  playFor(seconds(3));
  EXPECT_THAT(desk.replies(now_), IsEmpty());
  EXPECT_EQ(shown(kApp), "1.1 stopped");
  // Sent again, it is answered and not carried out.
  stop(desk);
  EXPECT_THAT(desk.replies(now_), SizeIs(1));
  EXPECT_THAT(desk.executions(), ElementsAre(Pair(Pair("stopApp", kApp), 1U)));
}

TEST_F(CommandFaultTest, LateReply_ComesWhenItsTimeHasCome) {
  auto desk = deskWith({.kind = FaultKind::LateReply, .delay = milliseconds(700)});
  stop(desk);
  EXPECT_EQ(desk.due(), now_ + milliseconds(700));
  EXPECT_THAT(desk.replies(now_ + milliseconds(699)), IsEmpty());
  EXPECT_THAT(desk.replies(now_ + milliseconds(700)), SizeIs(1));
  EXPECT_EQ(desk.due(), CommandDesk::TimePoint::max());
}

TEST_F(CommandFaultTest, ShortReply_HasThreeParts) {
  auto desk = deskWith({.kind = FaultKind::ShortReply});
  stop(desk);
  EXPECT_EQ(desk.replies(now_).at(0).message.getnumParts(), 3U);
  playFor(seconds(3));
  EXPECT_EQ(shown(kApp), "1.1 stopped");
}

TEST_F(CommandFaultTest, DoubleReply_ComesTwice) {
  auto desk = deskWith({.kind = FaultKind::DoubleReply});
  stop(desk);
  const auto replies = desk.replies(now_);
  ASSERT_THAT(replies, SizeIs(2));
  EXPECT_EQ(replies[0].message.parts(), replies[1].message.parts());
  EXPECT_EQ(desk.executed("stopApp"), 1U);
}

TEST_F(CommandFaultTest, Refuse_RefusesWithTheCode) {
  auto desk = deskWith({.kind = FaultKind::Refuse, .code = 512});
  EXPECT_EQ(ask(desk, "stopApp", appDocument("stopApp", kApp)), "512 Refused on purpose");
  playFor(seconds(3));
  EXPECT_THAT(progress(), ElementsAre("0 failed 512 Refused on purpose"));
  EXPECT_EQ(desk.executed("stopApp"), 0U);
}

TEST_F(CommandFaultTest, Fail_FailsInTheEndWithTheCode) {
  auto desk = deskWith({.kind = FaultKind::Fail, .code = 514});
  EXPECT_EQ(ask(desk, "stopApp", appDocument("stopApp", kApp)), "100 OK");
  playFor(seconds(3));
  EXPECT_EQ(progress().back(), "75 failed 514 stopApp ended with exit status 1");
  EXPECT_EQ(shown(kApp), "1.1 running");
}

TEST_F(CommandFaultTest, Stall_RestsHalfWay) {
  auto desk = deskWith({.kind = FaultKind::Stall, .lasts = seconds(5)});
  stop(desk);
  playFor(milliseconds(5999));
  EXPECT_THAT(progress(), ElementsAre("0 running 100", "25 running 100", "50 running 100"));
  playFor(milliseconds(501));
  EXPECT_EQ(progress().back(), "100 succeeded 100");
}

TEST_F(CommandFaultTest, StallForGood_EndsWithTheFaults) {
  auto desk = deskWith({.kind = FaultKind::Stall});
  EXPECT_EQ(ask(desk, "stopApp", appDocument("stopApp", kApp)), "100 OK");
  playFor(seconds(1000));
  EXPECT_EQ(progress().back(), "50 running 100");
  EXPECT_EQ(ask(desk, "upgradeApp", upgradeDocument(kApp, "/p")),
            "507 A command is under way on instance slot3-app1");
  playFor(milliseconds(0));
  desk.clearFaults(now_);
  playFor(seconds(1));
  EXPECT_EQ(progress().back(), "100 succeeded 100");
}

TEST_F(CommandFaultTest, RunBackwards_LetsPercentagesFall) {
  auto desk = deskWith({.kind = FaultKind::RunBackwards});
  stop(desk);
  playFor(seconds(3));
  EXPECT_THAT(progress(), ElementsAre("0 running 100", "75 running 100", "50 running 100",
                                      "25 running 100", "100 succeeded 100"));
}

TEST_F(CommandFaultTest, LoseReport_DoesTheWorkWithoutTellingItsEnd) {
  auto desk = deskWith({.kind = FaultKind::LoseReport});
  stop(desk);
  playFor(seconds(3));
  EXPECT_EQ(progress().back(), "75 running 100");
  EXPECT_EQ(shown(kApp), "1.1 stopped");
  EXPECT_THAT(ended_, ElementsAre("stopApp"));
}

TEST_F(CommandFaultTest, Die_ComesAmidTheWork) {
  auto desk = deskWith({.kind = FaultKind::Die, .lasts = milliseconds(300)});
  stop(desk);
  EXPECT_THAT(desk.replies(now_), SizeIs(1));
  EXPECT_FALSE(desk.death(now_ + milliseconds(1249)));
  EXPECT_EQ(desk.death(now_ + milliseconds(1250)), milliseconds(300));
  EXPECT_FALSE(desk.death(now_ + seconds(10)));
}

TEST_F(CommandFaultTest, DieBeforeTheReply_LosesIt) {
  auto desk = deskWith({.kind = FaultKind::Die, .beforeReply = true});
  stop(desk);
  EXPECT_THAT(desk.replies(now_), IsEmpty());
  EXPECT_TRUE(desk.death(now_));
  EXPECT_EQ(desk.executed("stopApp"), 1U);
}

TEST_F(CommandFaultTest, DieAtACommandWithoutWork_ComesBeforeItsReply) {
  auto desk = deskWith({.kind = FaultKind::Die});
  send(desk, "clearLogData", "<clearLogDataRequest/>", "1", "gateway");
  EXPECT_THAT(desk.replies(now_), IsEmpty());
  EXPECT_TRUE(desk.death(now_));
}

TEST_F(CommandFaultTest, OfAnotherCommand_WaitsForIt) {
  auto desk = deskWith({.kind = FaultKind::NoReply, .command = "startApp"});
  stop(desk);
  EXPECT_THAT(desk.replies(now_), SizeIs(1));
  EXPECT_THAT(desk.faults(), SizeIs(1));
}

TEST_F(CommandFaultTest, UnknownCommand_MeetsNone) {
  auto desk = deskWith({.kind = FaultKind::NoReply});
  EXPECT_EQ(ask(desk, "reboot", "<x/>"), "500 Invalid command");
  EXPECT_THAT(desk.faults(), SizeIs(1));
}

}  // namespace
}  // namespace sma
