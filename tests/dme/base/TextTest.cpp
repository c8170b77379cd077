#include "dme/base/Text.h"

#include <gtest/gtest.h>

namespace dme {
namespace {

TEST(CutText, UpToTheBound_StaysAsItIs) {
  EXPECT_EQ(cutText("", 3), "");
  EXPECT_EQ(cutText("abc", 3), "abc");
  EXPECT_EQ(cutText(std::string(255, 'x')), std::string(255, 'x'));
}

TEST(CutText, BeyondTheBound_EndsBeforeACharacterThatDoesNotFit) {
  EXPECT_EQ(cutText("abcd", 3), "abc");
  EXPECT_EQ(cutText("ab\xc3\xa4x", 3), "ab");
  EXPECT_EQ(cutText("ab\xc3\xa4x", 4), "ab\xc3\xa4");
  EXPECT_EQ(cutText("a\xf0\x9f\x98\x80", 4), "a");
  EXPECT_EQ(cutText("abc", 0), "");
}

TEST(CutText, NoUtf8_IsCutAtTheBound) {
  EXPECT_EQ(cutText("\x80\x80\x80\x80\x80\x80\x80", 5), "\x80\x80\x80\x80\x80");
  EXPECT_EQ(cutText("\xff\xff\xff\xff", 3), "\xff\xff\xff");
}

}  // namespace
}  // namespace dme
