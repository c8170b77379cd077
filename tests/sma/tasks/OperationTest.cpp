#include "sma/tasks/Operation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sma {
namespace {

using ::testing::ElementsAre;

OperationPlan plan(const std::string& command) {
  OperationPlan plan;
  plan.app = "a";
  plan.command = command;
  return plan;
}

std::vector<std::string> play(Operation& operation) {
  std::vector<std::string> reports;
  while (!operation.isDone()) {
    const Progress progress = operation.next();
    reports.push_back(std::to_string(progress.percent) + " " + progress.status + " " +
                      std::to_string(progress.code));
  }
  return reports;
}

TEST(Operation, ThatSucceeds_RisesToHundredPercent) {
  Operation operation(plan("startApp"));
  EXPECT_THAT(play(operation), ElementsAre("0 running 100", "25 running 100", "50 running 100",
                                           "75 running 100", "100 succeeded 100"));
}

TEST(Operation, ThatFails_StopsWithTheCauseWhereItWas) {
  OperationPlan failing = plan("startApp");
  failing.steps = 2;
  failing.succeeds = false;
  Operation operation(failing);
  operation.next();
  operation.next();
  const Progress last = operation.next();
  EXPECT_EQ(last.percent, 50U);
  EXPECT_EQ(last.status, "failed");
  EXPECT_EQ(last.code, 508U);
  EXPECT_EQ(last.error, "startApp ended with exit status 1");
  EXPECT_TRUE(operation.isDone());
  EXPECT_FALSE(operation.effect());
}

TEST(Operation, OneStep_HasAStartAndAnEnd) {
  OperationPlan quick = plan("stopApp");
  quick.steps = 1;
  Operation operation(quick);
  EXPECT_THAT(play(operation), ElementsAre("0 running 100", "100 succeeded 100"));
}

TEST(Operation, Effect_ComesWithTheEndOnly) {
  Operation operation(plan("stopApp"));
  operation.next();
  EXPECT_FALSE(operation.effect());
  play(operation);
  ASSERT_TRUE(operation.effect());
  EXPECT_EQ(operation.effect()->running, false);
}

TEST(Operation, Effects_AreThoseOfTheirCommands) {
  OperationPlan upgrade = plan("upgradeApp");
  upgrade.version = "2.0";
  Operation upgrading(upgrade);
  play(upgrading);
  EXPECT_EQ(upgrading.effect()->version, "2.0");
  EXPECT_FALSE(upgrading.effect()->running.has_value());
  Operation removing(plan("uninstallApp"));
  play(removing);
  EXPECT_EQ(removing.effect()->installed, false);
  Operation installing(plan("installApp"));
  play(installing);
  EXPECT_EQ(installing.effect()->installed, true);
  EXPECT_EQ(installing.effect()->running, false);
  EXPECT_EQ(installing.effect()->hotfixes, "");
}

TEST(Operation, OfThePlatform_ChangesNoInstance) {
  OperationPlan format = plan("formatDisk");
  format.app = "-1";
  Operation operation(format);
  play(operation);
  EXPECT_FALSE(operation.effect());
}

}  // namespace
}  // namespace sma
