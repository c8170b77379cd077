#include "dme/reports/Report.h"

#include <gtest/gtest.h>

#include "model/sm/AppInstanceMo.h"
#include "model/sm/MonitorMo.h"

namespace dme {
namespace {

TEST(TakeReport, Hotfixes_MayBeLongerThanOtherTexts) {
  sm::AppInstanceMo reported;
  reported.set(sm::AppInstanceMo::kHotfixes, std::string(4097, 'h'));
  reported.set(sm::AppInstanceMo::kInstalledVersion, std::string(256, 'v'));
  sm::AppInstanceMo taken;
  ReportCounters counters;
  ASSERT_TRUE(takeReport(reported.toConfig(), taken, counters));
  EXPECT_EQ(taken.get(sm::AppInstanceMo::kHotfixes), std::string(4096, 'h'));
  EXPECT_EQ(taken.get(sm::AppInstanceMo::kInstalledVersion), std::string(255, 'v'));
  EXPECT_EQ(counters.cutTexts, 2u);
}

TEST(TakeReport, AnotherClass_IsNotTaken) {
  ReportCounters counters;
  sm::MonitorMo taken;
  EXPECT_FALSE(takeReport(sm::AppInstanceMo().toConfig(), taken, counters));
  EXPECT_TRUE(taken.values().empty());
}

}  // namespace
}  // namespace dme
