#include "framework/utils/TzTimer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tests/support/LogCapture.h"

namespace {

using utils::TzTimer;

/// Sets TZ for a scope.
class Zone {
 public:
  explicit Zone(const char* zone) { setenv("TZ", zone, 1); }
  ~Zone() { unsetenv("TZ"); }
  Zone(const Zone&) = delete;
  Zone& operator=(const Zone&) = delete;
};

TEST(TzTimer, ZoneThatChanged_IsReadAndLoggedOnce) {
  const test_support::LogCapture log;
  {
    const Zone zone("ABC-5");
    EXPECT_TRUE(TzTimer::getInstance().refresh());
    EXPECT_EQ(TzTimer::getInstance().zone(), "ABC 18000");
    EXPECT_FALSE(TzTimer::getInstance().refresh());
  }
  const Zone zone("XYZ3");
  EXPECT_TRUE(TzTimer::getInstance().refresh());
  EXPECT_EQ(TzTimer::getInstance().zone(), "XYZ -10800");
  EXPECT_EQ(log.count(5, "local time zone is ABC 18000"), 1U);
  EXPECT_EQ(log.count(5, "local time zone is XYZ -10800"), 1U);
}

TEST(TzTimer, Start_ReadsTheZoneAndTicksHourly) {
  const Zone zone("DEF-1");
  TzTimer::getInstance().start();
  TzTimer::getInstance().start();
  EXPECT_EQ(TzTimer::getInstance().zone(), "DEF 3600");
  EXPECT_NE(TzTimer::getInstance().handle(), -1);
  EXPECT_EQ(TzTimer::getInstance().interval(), 3600000U);
  TzTimer::getInstance().cancel();
}

}  // namespace
