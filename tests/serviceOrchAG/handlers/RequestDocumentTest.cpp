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
  const RequestTags tags =
      readRequestTags("<registerRequest><ip>\t 10.0.0.3 \n</ip></registerRequest>", kCommand);
  EXPECT_EQ(base::String("10.0.0.3"), tags.value("ip"));
  EXPECT_EQ(base::String("10.0.0.3"), tags.valueOrEmpty("ip"));
  ASSERT_NE(nullptr, tags.find("ip"));
  EXPECT_EQ(base::String("\t 10.0.0.3 \n"), *tags.find("ip"));
}

TEST(RequestTags, EmptyElement_IsNotMissing) {
  LogCapture log;
  const RequestTags tags = readRequestTags("<registerRequest><ip/></registerRequest>", kCommand);
  EXPECT_EQ(base::String(""), tags.value("ip"));
  EXPECT_EQ(base::String(""), tags.valueOrEmpty("ip"));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(RequestTags, MissingTag_IsLoggedOnlyWhenItCountsAsEmpty) {
  LogCapture log;
  const RequestTags tags = readRequestTags("<registerRequest/>", kCommand);
  EXPECT_EQ(nullptr, tags.find("ip"));
  EXPECT_EQ(std::nullopt, tags.value("ip"));
  EXPECT_THAT(log.lines(), IsEmpty());
  EXPECT_EQ(base::String(""), tags.valueOrEmpty("ip"));
  EXPECT_THAT(log.lines(), ElementsAre(LogLine{5, "missingTagError",
                                               "No <ip> tag found in the register request"}));
}

TEST(RequestTags, NoSuchDocument_HasNoTags) {
  EXPECT_THAT(readRequestTags("", kCommand).all(), IsEmpty());
  EXPECT_THAT(readRequestTags("no document", kCommand).all(), IsEmpty());
  EXPECT_THAT(readRequestTags("<registerRequest><ip>", kCommand).all(), IsEmpty());
  EXPECT_THAT(readRequestTags("<register><ip>1</ip></register>", kCommand).all(), IsEmpty());
  EXPECT_THAT(readRequestTags("\xff\xfe", kCommand).all(), IsEmpty());
}

TEST(RequestTree, Tags_AreThoseBelowTheRoot) {
  const RequestTree tree(
      "<registerRequest><ip>1</ip><group><port>2</port></group></registerRequest>", kCommand);
  EXPECT_EQ(base::String("1"), tree.tags().value("ip"));
  EXPECT_EQ(std::nullopt, tree.tags().value("port"));
  EXPECT_EQ(base::String(""), tree.tags().value("group"));
}

TEST(RequestTree, FindAll_ReachesEveryDepthInOrder) {
  const RequestTree tree(
      "<registerRequest><g><v>1</v></g><deep><g><v>2</v></g></deep></registerRequest>", kCommand);
  const auto groups = tree.findAll("g");
  ASSERT_EQ(2U, groups.size());
  EXPECT_EQ(base::String("1"), tree.tagsOf(*groups[0]).value("v"));
  EXPECT_EQ(base::String("2"), tree.tagsOf(*groups[1]).value("v"));
}

TEST(RequestTree, NoDocument_HasNothing) {
  const RequestTree tree("<registerRequest>", kCommand);
  EXPECT_THAT(tree.tags().all(), IsEmpty());
  EXPECT_THAT(tree.findAll("g"), IsEmpty());
}

TEST(RequestTree, OtherRoot_HasGroupsButNoTags) {
  const RequestTree tree("<other><ip>1</ip></other>", kCommand);
  EXPECT_THAT(tree.tags().all(), IsEmpty());
  EXPECT_EQ(1U, tree.findAll("ip").size());
}

}  // namespace
}  // namespace zan_serviceOrchAG
