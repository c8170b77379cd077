#include "framework/noxxml/PreScan.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

bool isAdmissible(std::string_view text) {
  return noxxml::isAdmissible(text, noxxml::Limits());
}

bool isAdmissibleAtDepth(std::string_view text, unsigned depth) {
  return noxxml::isAdmissible(text, {.maxDepth = depth});
}

TEST(PreScan, NulAnywhere_IsRefused) {
  const std::string text = "<!--c--><r a='1'>t<![CDATA[s]]></r><?p q?>";
  ASSERT_TRUE(isAdmissible(text));
  for (std::size_t at = 0; at <= text.size(); ++at) {
    std::string changed = text;
    changed.insert(at, 1, '\0');
    EXPECT_FALSE(isAdmissible(changed)) << at;
  }
}

TEST(PreScan, Depth_CountsOpenElements) {
  EXPECT_FALSE(isAdmissibleAtDepth("<a/>", 0));
  EXPECT_TRUE(isAdmissibleAtDepth("<a/>", 1));
  EXPECT_TRUE(isAdmissibleAtDepth("<a></a>", 1));
  EXPECT_FALSE(isAdmissibleAtDepth("<a><b/></a>", 1));
  EXPECT_TRUE(isAdmissibleAtDepth("<a><b></b><b/><b></b></a>", 2));
  EXPECT_FALSE(isAdmissibleAtDepth("<a><b><c></c></b></a>", 2));
}

TEST(PreScan, MarkupInCommentsSectionsAndQuotes_IsNotCounted) {
  EXPECT_TRUE(isAdmissibleAtDepth("<a><!--<b><c>--><![CDATA[<b><c>]]><?p <b><c>?></a>", 1));
  EXPECT_TRUE(isAdmissibleAtDepth("<a x='<b><c>' y=\"<b><c>\"></a>", 1));
  EXPECT_FALSE(isAdmissibleAtDepth("<a x='/>'><b></b></a>", 1)) << "it does not close itself";
}

TEST(PreScan, CommentThatIsTooShort_IsNotClosed) {
  EXPECT_FALSE(isAdmissible("<!--><r/>"));
  EXPECT_FALSE(isAdmissible("<!---><r/>"));
  EXPECT_TRUE(isAdmissible("<!----><r/>"));
}

TEST(PreScan, TagsAreCountedNotMatched) {
  EXPECT_TRUE(isAdmissible("<a><b></a></b>"));
}

TEST(PreScan, Size_IsBounded) {
  EXPECT_TRUE(noxxml::isAdmissible("<r/>", {.maxBytes = 4}));
  EXPECT_FALSE(noxxml::isAdmissible("<r/>", {.maxBytes = 3}));
}

}  // namespace
