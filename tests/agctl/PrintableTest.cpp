#include "agctl/Printable.h"

#include <gtest/gtest.h>

#include <string>

namespace agctl {
namespace {

struct Case {
  std::string text;
  std::string utf8;
  std::string ascii;
};

class PrintableText : public testing::TestWithParam<Case> {};

TEST_P(PrintableText, IsShownOrEscaped) {
  EXPECT_EQ(printable(GetParam().text, Charset::kUtf8), GetParam().utf8);
  EXPECT_EQ(printable(GetParam().text, Charset::kAscii), GetParam().ascii);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, PrintableText,
    testing::Values(Case{"", "", ""}, Case{"plain ~", "plain ~", "plain ~"},
                    Case{"a\nb\tc\rd", R"(a\x0Ab\x09c\x0Dd)", R"(a\x0Ab\x09c\x0Dd)"},
                    Case{"\x1b[31m\x07\x7f", R"(\x1B[31m\x07\x7F)", R"(\x1B[31m\x07\x7F)"},
                    Case{std::string("a\0b", 3), R"(a\x00b)", R"(a\x00b)"},
                    // A C1 control character as UTF-8, and as a byte.
                    Case{"\u009b1m\x9b", R"(\xC2\x9B1m\x9B)", R"(\xC2\x9B1m\x9B)"},
                    Case{"\xc3", R"(\xC3)", R"(\xC3)"},
                    Case{"ü数😀", "ü数😀", R"(\u00FC\u6570\U0001F600)"},
                    Case{"e\u0301", "e\u0301", R"(e\u0301)"},
                    Case{"a\u202eb\u2066c", R"(a\u202Eb\u2066c)", R"(a\u202Eb\u2066c)"},
                    Case{"a\u200bb\ufeffc", R"(a\u200Bb\uFEFFc)", R"(a\u200Bb\uFEFFc)"},
                    Case{"\u2028\U000e0041\ue000", R"(\u2028\U000E0041\uE000)",
                         R"(\u2028\U000E0041\uE000)"},
                    Case{"back\\slash", "back\\slash", "back\\slash"}));

TEST(DisplayWidth, CountsColumns) {
  EXPECT_EQ(displayWidth(""), 0U);
  EXPECT_EQ(displayWidth("abc"), 3U);
  EXPECT_EQ(displayWidth("ü"), 1U);
  EXPECT_EQ(displayWidth("e\u0301"), 1U);
  EXPECT_EQ(displayWidth("数据"), 4U);
}

TEST(Cut, NeverTakesMoreThanItsColumns) {
  EXPECT_EQ(cut("abc", 3, Charset::kUtf8), "abc");
  EXPECT_EQ(cut("abcd", 3, Charset::kUtf8), "ab…");
  EXPECT_EQ(cut("abcd", 3, Charset::kAscii), "ab~");
  EXPECT_EQ(cut("数据库", 5, Charset::kUtf8), "数据…");
  EXPECT_EQ(cut("数据库", 4, Charset::kUtf8), "数…");
  EXPECT_EQ(cut("abcd", 1, Charset::kUtf8), "…");
  EXPECT_EQ(cut("abcd", 0, Charset::kUtf8), "");
}

}  // namespace
}  // namespace agctl
