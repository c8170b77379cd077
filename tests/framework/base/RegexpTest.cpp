#include "framework/base/Regexp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using base::Regexp;
using base::String;
using testing::ElementsAre;

TEST(RegexpSplit, SeparatorInFront_KeepsTheEmptyPiece) {
  EXPECT_THAT(Regexp::split("sma_slot3", "sma_slot"), ElementsAre(String(""), String("3")));
}

TEST(RegexpSplit, SeparatorAlone_GivesTwoEmptyPieces) {
  EXPECT_THAT(Regexp::split("sma_slot", "sma_slot"), ElementsAre(String(""), String("")));
}

TEST(RegexpSplit, TextAround_IsKept) {
  EXPECT_THAT(Regexp::split("xsma_slot3", "sma_slot"), ElementsAre(String("x"), String("3")));
  EXPECT_THAT(Regexp::split("sma_slot3sma_slot9", "sma_slot"),
              ElementsAre(String(""), String("3"), String("9")));
  EXPECT_THAT(Regexp::split("a.b.", "."), ElementsAre(String("a"), String("b"), String("")));
}

TEST(RegexpSplit, NoSeparator_IsOnePiece) {
  EXPECT_THAT(Regexp::split("blade1", "sma_slot"), ElementsAre(String("blade1")));
  EXPECT_THAT(Regexp::split("", "sma_slot"), ElementsAre(String("")));
}

TEST(RegexpSplit, EmptySeparator_IsOnePiece) {
  EXPECT_THAT(Regexp::split("abc", ""), ElementsAre(String("abc")));
}

TEST(RegexpSplit, SpecialCharacters_AreLiteral) {
  EXPECT_THAT(Regexp::split("a.*b", ".*"), ElementsAre(String("a"), String("b")));
  EXPECT_THAT(Regexp::split("axxb", ".*"), ElementsAre(String("axxb")));
}

TEST(RegexpSplit, Overlap_IsTakenFromTheLeft) {
  EXPECT_THAT(Regexp::split("aaa", "aa"), ElementsAre(String(""), String("a")));
}

TEST(RegexpSplit, Nul_IsAByteLikeAnyOther) {
  EXPECT_THAT(Regexp::split(std::string("a\0.b", 4), "."),
              ElementsAre(String(std::string("a\0", 2)), String("b")));
}

}  // namespace
