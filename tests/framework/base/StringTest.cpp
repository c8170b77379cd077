#include "framework/base/String.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

namespace {

using base::String;

TEST(String, Default_IsEmpty) {
  const String text;
  EXPECT_TRUE(text.empty());
  EXPECT_EQ(text.size(), 0u);
  EXPECT_STREQ(text.c_str(), "");
}

TEST(String, NullPointer_IsEmpty) {
  const char* nothing = nullptr;
  EXPECT_TRUE(String(nothing).empty());
}

TEST(String, FromEveryKindOfText_HoldsTheSameBytes) {
  const String fromLiteral = "abc";
  const String fromString = std::string("abc");
  const String fromView = std::string_view("abcd").substr(0, 3);
  EXPECT_EQ(fromLiteral, fromString);
  EXPECT_EQ(fromLiteral, fromView);
  EXPECT_EQ(fromView.str(), "abc");
}

TEST(String, EmbeddedNul_IsKeptAndCounted) {
  const String text(std::string("a\0b", 3));
  EXPECT_EQ(text.size(), 3u);
  EXPECT_NE(text, String("a"));
  EXPECT_STREQ(text.c_str(), "a");
}

TEST(String, Plus_LeavesBothOperands) {
  const String left = "heartbeat";
  const String whole = left + "Response";
  EXPECT_EQ(whole, "heartbeatResponse");
  EXPECT_EQ("x" + left, "xheartbeat");
  EXPECT_EQ(left, "heartbeat");
}

TEST(String, PlusAssignItself_Doubles) {
  String text = "ab";
  text += text;
  EXPECT_EQ(text, "abab");
}

TEST(String, Compare_LengthComesFirst) {
  EXPECT_LT(String("9").compare("10"), 0);
  EXPECT_GT(String("aa").compare("z"), 0);
  EXPECT_LT(String("").compare("a"), 0);
  EXPECT_TRUE(String("9") < String("10"));
  EXPECT_TRUE(String("b") < String("aa"));
}

TEST(String, Compare_SameLengthByUnsignedBytes) {
  EXPECT_LT(String("abc").compare("abd"), 0);
  EXPECT_GT(String("\xff").compare("a"), 0);
  EXPECT_EQ(String("abc").compare("abc"), 0);
  EXPECT_NE(String("abc"), String("ABC"));
}

TEST(String, AsMapKey_IsOrderedByLengthThenBytes) {
  const std::map<String, int> map{{"10", 3}, {"9", 2}, {"2", 1}};
  std::string order;
  for (const auto& [key, value] : map) {
    order += key.str() + ' ';
  }
  EXPECT_EQ(order, "2 9 10 ");
}

TEST(String, Printed_IsItsBytes) {
  std::ostringstream out;
  out << String("a b");
  EXPECT_EQ(out.str(), "a b");
}

TEST(String, Init_MayBeRepeated) {
  String::init();
  String::init();
  EXPECT_EQ(String("a").size(), 1u);
}

}  // namespace
