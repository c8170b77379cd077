#include "framework/core_utils/Text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using core_utils::toUpperCase;

TEST(ToUpperCase, AsciiLetters_AreRaised) {
  EXPECT_EQ(toUpperCase("abz-AZ 09_[`{"), "ABZ-AZ 09_[`{");
  EXPECT_EQ(toUpperCase(""), "");
}

TEST(ToUpperCase, OtherBytes_Stay) {
  EXPECT_EQ(toUpperCase("\xc3\xa4\xe0\xff"), "\xc3\xa4\xe0\xff");
  EXPECT_EQ(toUpperCase(std::string("a\0b", 3)).str(), std::string("A\0B", 3));
}

TEST(ToUpperCase, Argument_Stays) {
  const base::String text = "abc";
  EXPECT_EQ(toUpperCase(text), "ABC");
  EXPECT_EQ(text, "abc");
}

}  // namespace
