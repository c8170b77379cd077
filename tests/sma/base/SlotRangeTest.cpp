#include "sma/base/SlotRange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace sma {
namespace {

using ::testing::ElementsAre;

TEST(SlotRange, SlotsAndRanges_AreSortedAndNamedOnce) {
  EXPECT_THAT(parseSlotRange("7,1-3,2"), ElementsAre(1U, 2U, 3U, 7U));
}

TEST(SlotRange, OneSlot_IsARangeOfOne) {
  EXPECT_THAT(parseSlotRange("65535"), ElementsAre(65535U));
}

class SlotRangeRefused : public testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(SlotRangeRefused, BadText_NamesThePiece) {
  const auto [text, message] = GetParam();
  try {
    parseSlotRange(text);
    FAIL() << "took " << text;
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), message);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, SlotRangeRefused,
    testing::Values(
        std::pair("", "slots: '' is no slot number; write slots and ranges as in 1-4,7"),
        std::pair("1,,2", "slots: '' is no slot number; write slots and ranges as in 1-4,7"),
        std::pair("0", "slots: '0' is outside 1 to 65535; write slots and ranges as in 1-4,7"),
        std::pair("65536",
                  "slots: '65536' is outside 1 to 65535; write slots and ranges as in 1-4,7"),
        std::pair("4-1", "slots: '4-1' runs backwards; write slots and ranges as in 1-4,7"),
        std::pair("1-", "slots: '1-' is no slot number; write slots and ranges as in 1-4,7"),
        std::pair("-1", "slots: '-1' is no slot number; write slots and ranges as in 1-4,7"),
        std::pair("2x", "slots: '2x' is no slot number; write slots and ranges as in 1-4,7")));

}  // namespace
}  // namespace sma
