#include "agctl/Json.h"

#include <gtest/gtest.h>

namespace agctl {
namespace {

std::string nested(std::size_t levels) {
  return std::string(levels, '[') + std::string(levels, ']');
}

std::string wide(std::size_t members) {
  std::string text = "{\"inner\":{";
  for (std::size_t i = 0; i < members; ++i) {
    text += (i > 0 ? ",\"" : "\"") + std::to_string(i) + "\":{}";
  }
  return text + "}}";
}

TEST(ReadJson, TakesWhatIsWithinItsBounds) {
  EXPECT_TRUE(readJson(nested(64)));
  EXPECT_TRUE(readJson(wide(512)));
  EXPECT_TRUE(readJson("{\"a\":18446744073709551615}"));
}

TEST(ReadJson, RefusesTheRestWithACause) {
  EXPECT_EQ(readJson(nested(65)).error(), "it nests deeper than 64 levels");
  EXPECT_EQ(readJson(wide(513)).error(), "an object has more than 512 members");
  EXPECT_EQ(readJson("{\"a\":}").error(), "it is no JSON from byte 6 on");
  EXPECT_EQ(readJson("").error(), "it is no JSON from byte 1 on");
  EXPECT_EQ(readJson("{} {}").error(), "it is no JSON from byte 4 on");
  EXPECT_EQ(readJson("[1e999]").error(), "it holds a number that is too large");
  EXPECT_FALSE(readJson("\"\xff\""));
  EXPECT_FALSE(readJson(std::string(1000000, '[')));
}

TEST(Render, IsOneLineOfAscii) {
  const auto json = readJson("{\"b\":\"\\u001b\\n\x7fü\",\n\"a\":[1]}");
  EXPECT_EQ(render(*json), R"({"b":"\u001b\n\u007f\u00fc","a":[1]})");
}

TEST(Members, OfAnotherKindAreAsIfTheyWereNotThere) {
  const auto json = readJson(R"({"t":"x","n":7,"m":-7,"f":true,"l":[1],"o":{"a":1},"z":null})");
  EXPECT_EQ(textOf(*json, "t"), "x");
  EXPECT_EQ(textOf(*json, "n"), "");
  EXPECT_EQ(numberOf(*json, "n"), 7U);
  EXPECT_EQ(numberOf(*json, "m"), std::nullopt);
  EXPECT_EQ(numberOf(*json, "none"), std::nullopt);
  EXPECT_EQ(numberTextOf(*json, "n"), "7");
  EXPECT_EQ(numberTextOf(*json, "z"), "");
  EXPECT_TRUE(flagOf(*json, "f"));
  EXPECT_FALSE(flagOf(*json, "n"));
  EXPECT_EQ(listOf(*json, "l").size(), 1U);
  EXPECT_TRUE(listOf(*json, "o").empty());
  EXPECT_EQ(objectOf(*json, "o").size(), 1U);
  EXPECT_TRUE(objectOf(*json, "l").empty());
  EXPECT_EQ(textOf(Json(), "t"), "");
  EXPECT_EQ(textOf(Json::array(), "t"), "");
}

}  // namespace
}  // namespace agctl
