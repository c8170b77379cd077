#include "framework/sysdebug/LogControlEpBI.h"

#include <gtest/gtest.h>

#include "model/sysdebug/Methods.h"
#include "tests/support/LogCapture.h"

namespace {

using sysdebug::LogControlEpBI;

class LogControlEpBITest : public testing::Test {
 protected:
  static int level() { return core_log::serviceLevel().get(); }
  const test_support::LogCapture log_;  // restores the level
};

TEST_F(LogControlEpBITest, Apply_SetsTheLevelOfTheService) {
  sysdebug::ApplyLogControlMe method;
  LogControlEpBI::processApply(method, 3);
  EXPECT_EQ(level(), 3);
  EXPECT_EQ(method.failure(), nullptr);
  EXPECT_TRUE(log_.contains(5, "log level is 3, was 0"));
}

TEST_F(LogControlEpBITest, LevelBeyondEight_FailsTheMethodAndChangesNothing) {
  sysdebug::ApplyLogControlMe method;
  LogControlEpBI::processApply(method, 9);
  EXPECT_EQ(level(), 0);
  ASSERT_NE(method.failure(), nullptr);
  EXPECT_EQ(method.failure()->bits, 1U);
  EXPECT_EQ(method.failure()->code, 1003U);
  EXPECT_EQ(method.failure()->text, "log level is not within 0 and 8");
}

TEST_F(LogControlEpBITest, Refresh_AnswersTheLevelInForce) {
  core_log::setLevel(2);
  sysdebug::RefreshLogControlMe method;
  LogControlEpBI::processRefresh(method);
  EXPECT_EQ(std::get<0>(method.out), 2U);
}

TEST_F(LogControlEpBITest, RefreshResponse_SetsTheLevel) {
  sysdebug::RefreshLogControlMe method;
  LogControlEpBI::processRefreshResponse(method, 4);
  EXPECT_EQ(level(), 4);
  LogControlEpBI::processRefreshResponse(method, 255);
  EXPECT_EQ(level(), 4);
}

}  // namespace
