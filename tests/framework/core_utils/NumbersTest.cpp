#include "framework/core_utils/Numbers.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using core_utils::stringToInt;
using core_utils::stringToUint;
using core_utils::uintToString;

std::int32_t toInt(const base::String& text) {
  std::int32_t value = 0;
  stringToInt(text, value);
  return value;
}

std::uint32_t toUint(const base::String& text) {
  std::uint32_t value = 0;
  stringToUint(text, value);
  return value;
}

TEST(StringToInt, Decimal_IsRead) {
  EXPECT_EQ(toInt("0"), 0);
  EXPECT_EQ(toInt("3"), 3);
  EXPECT_EQ(toInt("-7"), -7);
  EXPECT_EQ(toInt("+3"), 3);
  EXPECT_EQ(toInt("03"), 3);
  EXPECT_EQ(toInt("-0000000000003"), -3);
}

TEST(StringToInt, Limits_AreRead) {
  EXPECT_EQ(toInt("2147483647"), 2147483647);
  EXPECT_EQ(toInt("-2147483648"), -2147483647 - 1);
}

TEST(StringToInt, AnythingElse_ThrowsAndLeavesTheValue) {
  for (const char* text : {"",
                           " ",
                           "3abc",
                           "abc",
                           " 3",
                           "3 ",
                           "3\n",
                           "+",
                           "-",
                           "+-3",
                           "-+3",
                           "++3",
                           "--3",
                           "0x10",
                           "1e3",
                           "3.0",
                           "2147483648",
                           "-2147483649",
                           "99999999999999999999",
                           "\xd9\xa3"}) {
    std::int32_t value = 42;
    EXPECT_THROW(stringToInt(text, value), std::invalid_argument) << text;
    EXPECT_EQ(value, 42) << text;
  }
}

TEST(StringToInt, NulInside_Throws) {
  std::int32_t value = 42;
  EXPECT_THROW(stringToInt(std::string("3\0", 2), value), std::invalid_argument);
  EXPECT_EQ(value, 42);
}

TEST(StringToInt, Refusal_NamesTheValue) {
  std::int32_t value = 0;
  try {
    stringToInt("3abc", value);
    FAIL() << "no exception";
  } catch (const std::invalid_argument& e) {
    EXPECT_STREQ(e.what(), "not a decimal number: '3abc'");
  }
}

TEST(StringToUint, Decimal_IsRead) {
  EXPECT_EQ(toUint("0"), 0u);
  EXPECT_EQ(toUint("007"), 7u);
  EXPECT_EQ(toUint("4294967295"), 4294967295u);
}

TEST(StringToUint, AnythingElse_ThrowsAndLeavesTheValue) {
  for (const char* text :
       {"", " ", "-5", "-0", "+5", "12abc", " 1", "1 ", "4294967296", "99999999999999999999"}) {
    std::uint32_t value = 42;
    EXPECT_THROW(stringToUint(text, value), std::invalid_argument) << text;
    EXPECT_EQ(value, 42u) << text;
  }
}

TEST(UintToString, Number_IsPlainDecimal) {
  EXPECT_EQ(uintToString(0), "0");
  EXPECT_EQ(uintToString(1000000), "1000000");
  EXPECT_EQ(uintToString(4294967295u), "4294967295");
}

}  // namespace
