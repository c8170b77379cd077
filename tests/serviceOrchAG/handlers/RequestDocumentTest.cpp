#include "serviceOrchAG/handlers/RequestDocument.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/support/LogCapture.h"

namespace zan_serviceOrchAG {
namespace {

using test_support::LogCapture;
using test_support::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kCommand = "register";

TEST(RequestTags, Values_AreTrimmed) {
  const RequestTree tree("<registerRequest><ip>\t 10.0.0.3 \n</ip></registerRequest>", kCommand);
  const RequestTags tags = tree.tags();
  EXPECT_TRUE(tags.has("ip"));
  EXPECT_EQ("\t 10.0.0.3 \n", tags.valueAsSent("ip"));
  EXPECT_EQ("10.0.0.3", tags.value("ip"));
  EXPECT_EQ("10.0.0.3", tags.expectedValue("ip"));
  EXPECT_EQ("10.0.0.3", tags.valueOrEmpty("ip"));
}

TEST(RequestTags, EmptyElement_IsNotMissing) {
  LogCapture log;
  const RequestTree tree("<registerRequest><ip/></registerRequest>", kCommand);
  const RequestTags tags = tree.tags();
  EXPECT_TRUE(tags.has("ip"));
  EXPECT_EQ("", tags.valueAsSent("ip"));
  EXPECT_EQ("", tags.value("ip"));
  EXPECT_EQ("", tags.expectedValue("ip"));
  EXPECT_EQ("", tags.valueOrEmpty("ip"));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(RequestTags, MissingTag_IsLoggedWhenItIsExpected) {
  LogCapture log;
  const RequestTree tree("<registerRequest/>", kCommand);
  const RequestTags tags = tree.tags();
  EXPECT_FALSE(tags.has("ip"));
  EXPECT_EQ(std::nullopt, tags.valueAsSent("ip"));
  EXPECT_EQ(std::nullopt, tags.value("ip"));
  EXPECT_THAT(log.lines(), IsEmpty());
  const LogLine line{5, "missingTagError", "No <ip> tag found in the register request"};
  EXPECT_EQ(std::nullopt, tags.expectedValue("ip"));
  EXPECT_THAT(log.lines(), ElementsAre(line));
  EXPECT_EQ("", tags.valueOrEmpty("ip"));
  EXPECT_THAT(log.lines(), ElementsAre(line, line));
}

TEST(RequestTags, SeveralOfOneName_TheLastCounts) {
  const RequestTree tree(
      "<registerRequest><ip>1</ip><port>9</port><ip>2</ip><deep><ip>3</ip></deep>"
      "</registerRequest>",
      kCommand);
  EXPECT_EQ("2", tree.tags().value("ip"));
}

TEST(RequestTags, ValueAmongChildren_IsTheOwnText) {
  const RequestTree tree(
      "<registerRequest ip='0'><ip a='b'>1<x>2</x><![CDATA[<3>]]>&amp;</ip></registerRequest>",
      kCommand);
  EXPECT_EQ("1<3>&", tree.tags().value("ip"));
  EXPECT_EQ(std::nullopt, tree.tags().value("x"));
}

TEST(RequestTags, NoSuchDocument_HasNoTags) {
  for (const char* document : {"", "no document", "<registerRequest><ip>",
                               "<register><ip>1</ip></register>", "\xff\xfe"}) {
    EXPECT_FALSE(RequestTree(document, kCommand).tags().has("ip")) << document;
  }
}

TEST(RequestTree, Tags_AreThoseBelowTheRoot) {
  const RequestTree tree(
      "<registerRequest><ip>1</ip><group><port>2</port></group></registerRequest>", kCommand);
  EXPECT_EQ("1", tree.tags().value("ip"));
  EXPECT_EQ(std::nullopt, tree.tags().value("port"));
  EXPECT_EQ("", tree.tags().value("group"));
}

TEST(RequestTree, FindAll_ReachesEveryDepthInOrder) {
  const RequestTree tree(
      "<registerRequest><g><v>1</v></g><deep><g><v>2</v></g></deep></registerRequest>", kCommand);
  const auto groups = tree.findAll("g");
  ASSERT_EQ(2U, groups.size());
  EXPECT_EQ("1", tree.tagsOf(*groups[0]).value("v"));
  EXPECT_EQ("2", tree.tagsOf(*groups[1]).value("v"));
}

TEST(RequestTree, NoDocument_HasNothing) {
  const RequestTree tree("<registerRequest><ip>1</ip><g>", kCommand);
  EXPECT_FALSE(tree.tags().has("ip"));
  EXPECT_THAT(tree.findAll("g"), IsEmpty());
}

TEST(RequestTree, OtherRoot_HasGroupsButNoTags) {
  const RequestTree tree("<other><ip>1</ip></other>", kCommand);
  EXPECT_FALSE(tree.tags().has("ip"));
  EXPECT_EQ(1U, tree.findAll("ip").size());
}

}  // namespace
}  // namespace zan_serviceOrchAG
