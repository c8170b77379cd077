#include "supervisor/admin/Target.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace supervisor::admin {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

TEST(Target, PathAndQuery_AreSplitAndDecoded) {
  const auto target = parseTarget("/api/v1/model?dn=sys%2Fchassis-1&x=a+b%2B&flag");
  ASSERT_TRUE(target) << target.error();
  EXPECT_THAT(target->steps, ElementsAre("api", "v1", "model"));
  EXPECT_THAT(target->query,
              ElementsAre(Pair("dn", "sys/chassis-1"), Pair("flag", ""), Pair("x", "a b+")));
}

TEST(Target, EscapedSlash_StaysInItsStep) {
  EXPECT_THAT(parseTarget("/a%2Fb/c+d")->steps, ElementsAre("a/b", "c+d"));
}

TEST(Target, Root_HasNoSteps) {
  EXPECT_THAT(parseTarget("/")->steps, IsEmpty());
  EXPECT_THAT(parseTarget("/?")->query, IsEmpty());
}

TEST(Target, EmptyStepInside_IsAStep) {
  EXPECT_THAT(parseTarget("//a")->steps, ElementsAre("", "a"));
}

TEST(Target, BytesThatAreNoText_AreKept) {
  EXPECT_THAT(parseTarget("/%00%fF")->steps, ElementsAre(std::string("\0\xff", 2)));
}

TEST(Target, NoPathFromTheRoot_IsRefused) {
  for (const char* text : {"", "a", "http://host/a", "*", "host:443", "?a=b", "/a#b"}) {
    const auto target = parseTarget(text);
    ASSERT_FALSE(target) << text;
    EXPECT_EQ(target.error(), "the target is no path from the root");
  }
}

TEST(Target, BadEscape_IsRefused) {
  for (const char* text : {"/%", "/%4", "/%4g", "/%-1", "/%+1", "/% 1"}) {
    const auto target = parseTarget(text);
    ASSERT_FALSE(target) << text;
    EXPECT_EQ(target.error(), "an escape in the path is not % and two digits");
  }
  EXPECT_EQ(parseTarget("/?a=%x1").error(), "an escape in the query is not % and two digits");
  EXPECT_EQ(parseTarget("/?%=1").error(), "an escape in the query is not % and two digits");
}

TEST(Target, FieldTwice_IsRefused) {
  EXPECT_EQ(parseTarget("/?a=1&b=2&%61=3").error(), "the query names 'a' twice");
}

TEST(Target, EscapedValue_ComesBack) {
  EXPECT_EQ(escapeQueryValue("sys/app-a%2F1 \xC3&+="), "sys/app-a%252F1%20%C3%26%2B%3D");
  std::string every;
  for (int byte = 0; byte < 256; ++byte) {
    every += static_cast<char>(byte);
  }
  EXPECT_EQ(parseTarget("/?dn=" + escapeQueryValue(every))->query.at("dn"), every);
}

}  // namespace
}  // namespace supervisor::admin
