#include "dme/base/UnsettledValue.h"

#include <gtest/gtest.h>

#include <string>

namespace dme {
namespace {

using Value = UnsettledValue<std::string>;

TEST(UnsettledValueTest, OneChange_GoesBackToWhatWasThere) {
  Value value;
  value.change("left", "right");
  EXPECT_FALSE(value.isSettled());
  EXPECT_EQ(value.settle(false), "left");
  EXPECT_TRUE(value.isSettled());
}

TEST(UnsettledValueTest, StoredChange_Stays) {
  Value value;
  value.change("left", "right");
  EXPECT_EQ(value.settle(true), std::nullopt);
}

TEST(UnsettledValueTest, SeveralChanges_TheLastDecides) {
  struct Case {
    bool isFirstStored;
    bool isSecondStored;
    std::optional<std::string> back;
  };
  for (const auto& row : {Case{false, false, "left"}, Case{true, false, "right"},
                          Case{false, true, std::nullopt}, Case{true, true, std::nullopt}}) {
    Value value;
    value.change("left", "right");
    value.change("right", "middle");
    EXPECT_EQ(value.settle(row.isFirstStored), std::nullopt);
    EXPECT_EQ(value.settle(row.isSecondStored), row.back);
  }
}

TEST(UnsettledValueTest, ChangeAfterOneThatFailed_StillKnowsWhatIsStored) {
  Value value;
  value.change("left", "right");
  value.change("right", "middle");
  EXPECT_EQ(value.settle(false), std::nullopt);
  value.change("middle", "upper");
  EXPECT_EQ(value.settle(false), std::nullopt);
  EXPECT_EQ(value.settle(false), "left");
}

}  // namespace
}  // namespace dme
