#include "framework/core_log/LineBudget.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace core_log {
namespace {

using std::chrono::seconds;
using Told = std::vector<std::tuple<std::string, std::uint32_t, std::uint64_t>>;

class LineBudgetFixture : public testing::Test {
 protected:
  std::uint64_t admitted(std::uint64_t lines, std::string_view cause, std::uint32_t source = 0) {
    std::uint64_t count = 0;
    for (std::uint64_t i = 0; i < lines; ++i) {
      count += budget_.admits(cause, source, now_) ? 1 : 0;
    }
    return count;
  }
  Told endPeriod() {
    Told told;
    budget_.endPeriod(now_, [&](std::string_view cause, std::uint32_t source, std::uint64_t lines) {
      told.emplace_back(cause, source, lines);
    });
    return told;
  }

  LineBudget budget_;
  LineBudget::TimePoint now_{seconds(1000)};
};

TEST_F(LineBudgetFixture, WithinTheBound_AllAreWrittenAndThereIsNothingToTell) {
  EXPECT_EQ(admitted(LineBudget::kMostLines, "a"), LineBudget::kMostLines);
  EXPECT_FALSE(budget_.deadline());
  now_ += LineBudget::kPeriod;
  EXPECT_TRUE(endPeriod().empty());
  EXPECT_EQ(admitted(LineBudget::kMostLines, "a"), LineBudget::kMostLines);
}

TEST_F(LineBudgetFixture, BeyondTheBound_IsCountedAndToldWhenThePeriodEnds) {
  EXPECT_EQ(admitted(LineBudget::kMostLines + 7, "a"), LineBudget::kMostLines);
  ASSERT_TRUE(budget_.deadline());
  EXPECT_EQ(*budget_.deadline(), now_ + LineBudget::kPeriod);
  now_ += LineBudget::kPeriod - seconds(1);
  EXPECT_TRUE(endPeriod().empty());
  EXPECT_EQ(admitted(1, "a"), 0u);
  now_ += seconds(1);
  EXPECT_EQ(endPeriod(), (Told{{"a", 0, 8}}));
  EXPECT_FALSE(budget_.deadline());
  EXPECT_TRUE(endPeriod().empty());
  EXPECT_EQ(admitted(1, "a"), 1u);
}

TEST_F(LineBudgetFixture, PeriodThatNobodyEnded_KeepsItsCount) {
  admitted(LineBudget::kMostLines + 1, "a");
  now_ += 2 * LineBudget::kPeriod;
  EXPECT_EQ(admitted(1, "a"), 0u);
  EXPECT_EQ(endPeriod(), (Told{{"a", 0, 2}}));
}

TEST_F(LineBudgetFixture, OneThatIsLoud_LeavesTheOthersTheirLines) {
  admitted(LineBudget::kMostLines + 1, "a", 1);
  EXPECT_EQ(admitted(1, "a", 2), 1u);
  EXPECT_EQ(admitted(1, "b", 1), 1u);
  now_ += LineBudget::kPeriod;
  EXPECT_EQ(endPeriod(), (Told{{"a", 1, 1}}));
}

TEST_F(LineBudgetFixture, MorePlacesThanAreToldApart_ShareOne) {
  for (std::uint32_t source = 0; source < LineBudget::kMostPlaces; ++source) {
    ASSERT_EQ(admitted(1, "a", source), 1u);
  }
  EXPECT_EQ(admitted(6, "b", 1), 6u);
  EXPECT_EQ(admitted(6, "b", 2), 4u);
  EXPECT_EQ(admitted(1, "a", 0), 1u);
  now_ += LineBudget::kPeriod;
  EXPECT_EQ(endPeriod(), (Told{{"other causes", 0, 2}}));
}

}  // namespace
}  // namespace core_log
