#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "framework/noxxml/AgFactory.h"
#include "framework/noxxml/Limits.h"
#include "framework/noxxml/XMLConverter.h"

// Documents that come from a peer.

namespace {

using noxxml::AgElement;
using noxxml::XMLConverter;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

const std::string kReplacement = "\xef\xbf\xbd";

constexpr const char* kHeartbeat =
    "<?xml version=\"1.0\"?>\n"
    "<heartbeatRequest>\n"
    "  <bladeSlotId>3</bladeSlotId>\n"
    "  <cpu>12</cpu>\n"
    "  <memory>34</memory>\n"
    "</heartbeatRequest>\n";

bool parses(std::string_view text) {
  XMLConverter converter;
  return converter.xmlDeserialize(text) != nullptr;
}

// The text of the root of a document, or a mark that none was made.
std::string rootText(std::string_view text) {
  XMLConverter converter;
  const AgElement* const root = converter.xmlDeserialize(text);
  return root == nullptr ? "(unparsable)" : root->text().str();
}

std::vector<std::string> texts(const std::vector<AgElement*>& elements) {
  std::vector<std::string> all;
  for (const AgElement* element : elements) {
    all.push_back(element->text().str());
  }
  return all;
}

std::string nested(unsigned levels) {
  std::string text;
  for (unsigned i = 0; i < levels; ++i) {
    text += "<a>";
  }
  for (unsigned i = 0; i < levels; ++i) {
    text += "</a>";
  }
  return text;
}

// Restores the default limits.
struct LimitsTest : testing::Test {
  void TearDown() override { noxxml::setLimits({}); }
};

TEST(Xml2map, Heartbeat_IsItsValues) {
  EXPECT_THAT(
      XMLConverter::xml2map(kHeartbeat, "heartbeatRequest"),
      UnorderedElementsAre(Pair("bladeSlotId", "3"), Pair("cpu", "12"), Pair("memory", "34")));
}

TEST(Xml2map, OtherRoot_IsEmpty) {
  EXPECT_THAT(XMLConverter::xml2map(kHeartbeat, "registerRequest"), IsEmpty());
  EXPECT_THAT(XMLConverter::xml2map(kHeartbeat, "heartbeat"), IsEmpty());
  EXPECT_THAT(XMLConverter::xml2map(kHeartbeat, ""), IsEmpty());
}

TEST(Xml2map, RootNameDeeperDown_IsNotSearched) {
  EXPECT_THAT(XMLConverter::xml2map("<x><r><a>1</a></r></x>", "r"), IsEmpty());
}

TEST(Xml2map, Unparsable_IsEmpty) {
  for (const char* text : {"", " ", "plain", "<r>", "<r><a></r></a>", "</r>", "<r/><r/>", "x<r/>",
                           "<r/>x", "<r", "<", "<>", "< r/>", "<r a=1/>", "<r a/>"}) {
    EXPECT_THAT(XMLConverter::xml2map(text, "r"), IsEmpty()) << text;
  }
}

TEST(Xml2map, EmptyElement_IsAnEntry) {
  EXPECT_THAT(XMLConverter::xml2map("<r><a/><b></b></r>", "r"),
              ElementsAre(Pair("a", ""), Pair("b", "")));
}

TEST(Xml2map, Duplicate_LastWins) {
  EXPECT_THAT(XMLConverter::xml2map("<r><a>1</a><b>2</b><a>3</a></r>", "r"),
              ElementsAre(Pair("a", "3"), Pair("b", "2")));
}

TEST(Xml2map, ElementWithChildren_IsAnEntryWithItsOwnText) {
  EXPECT_THAT(XMLConverter::xml2map("<r><g><a>1</a></g><h>x<b>2</b>y</h></r>", "r"),
              ElementsAre(Pair("g", ""), Pair("h", "xy")));
}

TEST(Xml2map, Attributes_AreLeftOut) {
  EXPECT_THAT(XMLConverter::xml2map("<r z='9'><a y='8'>1</a></r>", "r"),
              ElementsAre(Pair("a", "1")));
}

TEST(Xml2map, OfAnElement_TakesThatElementOnly) {
  XMLConverter converter;
  const AgElement* const root = converter.xmlDeserialize(
      "<r><cpu><minus1>1</minus1></cpu><memory><minus1>2</minus1></memory></r>");
  ASSERT_NE(root, nullptr);
  EXPECT_THAT(XMLConverter::xml2map(root->findChild("memory"), "memory"),
              ElementsAre(Pair("minus1", "2")));
  EXPECT_THAT(XMLConverter::xml2map(root->findChild("memory"), "cpu"), IsEmpty());
  EXPECT_THAT(XMLConverter::xml2map(root->findChild("disk"), "disk"), IsEmpty());
}

TEST(Xml2map, ReferencesAndSections_AreDecoded) {
  EXPECT_THAT(XMLConverter::xml2map("<r><a>&lt;&gt;&amp;&quot;&apos;</a><b>&#65;&#x42;&#xe4;</b>"
                                    "<c>x<![CDATA[<&]]>y</c><d>p<!-- c -->q</d></r>",
                                    "r"),
              ElementsAre(Pair("a", "<>&\"'"), Pair("b", "AB\xc3\xa4"), Pair("c", "x<&y"),
                          Pair("d", "pq")));
}

TEST(XmlDeserialize, ByteOrderMarkPrologAndComments_ArePassedOver) {
  EXPECT_TRUE(parses("\xef\xbb\xbf<r/>"));
  EXPECT_TRUE(parses("<?xml version='1.0' encoding='UTF-8'?><!-- > --><?p q?><r/><!-- --><?p?>\n"));
}

TEST(XmlDeserialize, BlankText_IsKeptOnlyWithoutChildren) {
  EXPECT_EQ(rootText("<r>  </r>"), "  ");
  EXPECT_EQ(rootText("<r>\n  <a/>\n</r>"), "");
}

TEST(XmlDeserialize, LineEnds_AreLineFeeds) {
  EXPECT_EQ(rootText("<r>a\r\nb\rc</r>"), "a\nb\nc");
}

TEST(XmlDeserialize, NoRoot_IsNull) {
  for (const char* text : {"", "  \n", "<!-- -->", "<?xml version='1.0'?>", "text"}) {
    EXPECT_FALSE(parses(text)) << text;
  }
}

TEST(XmlDeserialize, MoreThanOneRootOrTextAround_IsNull) {
  for (const char* text : {"<a/><b/>", "<a></a><b></b>", "x<a/>", "<a/>x", "<a/></a>",
                           "<![CDATA[x]]><a/>", "<a/><![CDATA[x]]>"}) {
    EXPECT_FALSE(parses(text)) << text;
  }
}

TEST(XmlDeserialize, WrongNesting_IsNull) {
  for (const char* text : {"<a><b></a></b>", "<a></b>", "<a>", "<a><b></b>", "</a>", "<a></A>"}) {
    EXPECT_FALSE(parses(text)) << text;
  }
}

TEST(XmlDeserialize, AngleBracketInQuotes_DoesNotEndATag) {
  XMLConverter converter;
  const AgElement* const root = converter.xmlDeserialize("<r a='>' b=\"'/>\">t</r>");
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->attribute("a"), ">");
  EXPECT_EQ(root->attribute("b"), "'/>");
  EXPECT_EQ(root->attribute("c"), "");
  EXPECT_EQ(root->text(), "t");
  EXPECT_EQ(rootText("<r a='/>'>t</r>"), "t");
  EXPECT_EQ(rootText("<r a=\"/>\">t</r>"), "t");
}

TEST(XmlDeserialize, DuplicateAttribute_IsNull) {
  EXPECT_FALSE(parses("<r a='1' a='2'/>"));
  EXPECT_FALSE(parses("<r><b a='1' c='' a='2'/></r>"));
}

TEST(XmlDeserialize, MoreThan64Attributes_IsNull) {
  std::string attributes;
  for (int i = 0; i < 64; ++i) {
    attributes += " a" + std::to_string(i) + "=''";
  }
  EXPECT_TRUE(parses("<r" + attributes + "/>"));
  EXPECT_FALSE(parses("<r" + attributes + " b=''/>"));
}

TEST(XmlDeserialize, DocumentType_IsNull) {
  for (const char* text : {"<!DOCTYPE r><r/>", "<!doctype r><r/>",
                           "<?xml version='1.0'?><!DOCTYPE r SYSTEM 'file:///etc/passwd'><r/>",
                           "<!DOCTYPE r [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><r>&x;</r>",
                           "<!DOCTYPE r [<!ENTITY a 'ha'><!ENTITY b '&a;&a;&a;'>]><r>&b;</r>",
                           "<r><!DOCTYPE r></r>", "<r><!ENTITY x 'y'></r>"}) {
    EXPECT_FALSE(parses(text)) << text;
  }
}

TEST(XmlDeserialize, DocumentTypeAsText_IsText) {
  EXPECT_EQ(rootText("<r><!-- <!DOCTYPE r> --><![CDATA[<!DOCTYPE r>]]></r>"), "<!DOCTYPE r>");
}

TEST(XmlDeserialize, UnknownEntity_StaysAsItIs) {
  EXPECT_EQ(rootText("<r>&nbsp;&x;</r>"), "&nbsp;&x;");
}

TEST(XmlDeserialize, Nul_IsNull) {
  EXPECT_FALSE(parses(std::string_view("<r>\0</r>", 8)));
  EXPECT_FALSE(parses(std::string_view("<r/>\0", 5)));
  EXPECT_FALSE(parses(std::string_view("\0<r/>", 5)));
  EXPECT_FALSE(parses(std::string_view("\0", 1)));
}

TEST(XmlDeserialize, InvalidUtf8_IsReplaced) {
  EXPECT_EQ(rootText("<r>a\xff\xc3(\xed\xa0\x80</r>"),
            "a" + kReplacement + kReplacement + "(" + kReplacement + kReplacement + kReplacement);
  XMLConverter converter;
  const AgElement* const root = converter.xmlDeserialize("<r\xff a\xff='\xfe'/>");
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->name().str(), "r" + kReplacement);
  EXPECT_EQ(root->attribute("a" + kReplacement).str(), kReplacement);
}

TEST(XmlDeserialize, ControlCharacters_AreReplaced) {
  EXPECT_EQ(rootText("<r>a\x01\x1b[0m\x7f</r>"), "a" + kReplacement + kReplacement + "[0m\x7f");
  EXPECT_EQ(rootText("<r>a&#1;b&#xFFFE;</r>"), "a" + kReplacement + "b" + kReplacement);
  EXPECT_EQ(rootText("<r>&#13;&#10;&#9;</r>"), "\r\n\t");
}

TEST(XmlDeserialize, ReferenceToNoCharacter_NeverLeavesBrokenText) {
  for (const char* text :
       {"<r>a&#0;b</r>", "<r>&#xD800;</r>", "<r>&#x110000;</r>", "<r>&#99999999999999999999;</r>",
        "<r>&#;</r>", "<r>&#x;</r>", "<r>&</r>", "<r>&#-1;</r>"}) {
    XMLConverter converter;
    const AgElement* const root = converter.xmlDeserialize(text);
    ASSERT_NE(root, nullptr) << text;
    const std::string again = XMLConverter::xmlSerialize(root);
    EXPECT_EQ(rootText(again), root->text().str()) << text;
  }
}

TEST(XmlDeserialize, OtherEncodings_AreNull) {
  EXPECT_FALSE(parses(std::string_view("\xff\xfe<\0r\0/\0>\0", 10)));
  EXPECT_FALSE(parses(std::string_view("<\0r\0/\0>\0", 8)));
  EXPECT_FALSE(parses(std::string_view("\0<\0r\0/\0>", 8)));
}

TEST(XmlDeserialize, DeclaredEncoding_IsNotFollowed) {
  EXPECT_EQ(rootText("<?xml version='1.0' encoding='ISO-8859-1'?><r>\xc3\xa4\xe4</r>"),
            "\xc3\xa4" + kReplacement);
}

TEST(XmlDeserialize, EveryTruncation_IsNull) {
  const std::string text =
      "<?xml version=\"1.0\"?><!-- c --><platformInfoUpdateRequest a='1' b=\"2\">"
      "<cpu><minus1>1 &amp; 2</minus1></cpu><![CDATA[x]]><empty/><?p q?>"
      "</platformInfoUpdateRequest>";
  ASSERT_TRUE(parses(text));
  for (std::size_t size = 0; size < text.size(); ++size) {
    // A copy of that size, so that a read beyond it is seen by the sanitizer.
    const std::vector<char> cut(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_FALSE(parses(std::string_view(cut.data(), cut.size()))) << size;
  }
}

TEST(XmlDeserialize, EveryByteChanged_ParsesOrNotButNeverThrows) {
  const std::string text =
      "<?xml version=\"1.0\"?><!--c--><r a='1'><b>&amp;&#65;</b><![CDATA[x]]><c/></r>";
  unsigned parsed = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    for (unsigned byte = 0; byte < 256; ++byte) {
      std::string changed = text;
      changed[at] = static_cast<char>(byte);
      XMLConverter converter;
      const AgElement* const root = converter.xmlDeserialize(changed);
      if (root == nullptr) {
        continue;
      }
      ++parsed;
      const std::string again = XMLConverter::xmlSerialize(root);
      EXPECT_TRUE(again.empty() || parses(again)) << changed;
    }
  }
  EXPECT_GT(parsed, 1000u);
}

TEST_F(LimitsTest, DefaultDepth_Is64) {
  EXPECT_TRUE(parses(nested(64)));
  EXPECT_FALSE(parses(nested(65)));
}

TEST_F(LimitsTest, EmptyElementAtTheLastLevel_Counts) {
  noxxml::setLimits({.maxDepth = 2});
  EXPECT_TRUE(parses("<a><b/></a>"));
  EXPECT_FALSE(parses("<a><b><c/></b></a>"));
  EXPECT_TRUE(parses("<a><b/><b/><b></b><b/></a>")) << "siblings are not deeper";
}

TEST_F(LimitsTest, TextAtTheLastLevel_IsNoLevel) {
  noxxml::setLimits({.maxDepth = 2});
  EXPECT_EQ(rootText("<a>x<b>y<![CDATA[z]]></b>w</a>"), "xw");
}

TEST_F(LimitsTest, DepthBomb_IsNull) {
  EXPECT_FALSE(parses(nested(100000)));
  std::string open;
  for (int i = 0; i < 100000; ++i) {
    open += "<a>";
  }
  EXPECT_FALSE(parses(open));
}

TEST_F(LimitsTest, DepthBeyondTheLargest_IsTheLargest) {
  noxxml::setLimits({.maxDepth = 1000000});
  EXPECT_EQ(noxxml::limits().maxDepth, 1000u);
  EXPECT_TRUE(parses(nested(1000)));
  EXPECT_FALSE(parses(nested(1001)));
}

TEST_F(LimitsTest, Elements_AreCountedWithTheRoot) {
  noxxml::setLimits({.maxElements = 3});
  EXPECT_TRUE(parses("<a><b/><c>t</c></a>"));
  EXPECT_FALSE(parses("<a><b/><c><d/></c></a>"));
  EXPECT_TRUE(parses("<a x='1'><b/><!-- <c/> --><c>t</c></a>")) << "a comment holds none";
  EXPECT_FALSE(parses("<a x='1'><b/><c/><d/></a>"));
}

TEST_F(LimitsTest, DefaultElements_Are16384) {
  const auto siblings = [](int count) {
    std::string text = "<a>";
    for (int i = 0; i < count; ++i) {
      text += "<b/>";
    }
    return text + "</a>";
  };
  EXPECT_TRUE(parses(siblings(16383)));
  EXPECT_FALSE(parses(siblings(16384)));
  EXPECT_FALSE(parses(siblings(200000)));
}

TEST_F(LimitsTest, DefaultSize_IsOneMebibyte) {
  const std::string filler(1048576 - 7, 'x');
  EXPECT_TRUE(parses("<r>" + filler + "</r>"));
  EXPECT_FALSE(parses("<r>" + filler + "x</r>"));
}

TEST_F(LimitsTest, Size_CanBeSet) {
  noxxml::setLimits({.maxBytes = 4});
  EXPECT_TRUE(parses("<r/>"));
  EXPECT_FALSE(parses("<r />"));
}

TEST_F(LimitsTest, MegabyteOfPieces_IsJoinedInLinearTime) {
  noxxml::setLimits({.maxElements = 1000000});
  std::string text = "<r>";
  std::string expected;
  while (text.size() < 1000000) {
    text += "x<b/>";
    expected += 'x';
  }
  EXPECT_EQ(rootText(text + "</r>"), expected);
}

TEST_F(LimitsTest, MegabyteOfAttributes_IsRefused) {
  std::string text = "<r";
  for (int i = 0; text.size() < 1000000; ++i) {
    text += " a" + std::to_string(i) + "=''";
  }
  EXPECT_FALSE(parses(text + "/>"));
}

TEST_F(LimitsTest, MegabyteOfOneCharacter_IsNull) {
  for (const char c : {'<', '>', '"', '&', '\'', '!', '-', ']', '\x80'}) {
    EXPECT_FALSE(parses(std::string(1000000, c))) << c;
    EXPECT_FALSE(parses("<r>" + std::string(1000000, c))) << c;
  }
}

class TreeTest : public testing::Test {
 protected:
  XMLConverter converter_;
  AgElement* root_ = converter_.xmlDeserialize(
      "<r><a>1</a><g><a>2</a><h><a>3</a></h></g><b>4</b><a>5<a>6</a></a></r>");
};

TEST_F(TreeTest, Children_AreDirectAndInOrder) {
  ASSERT_NE(root_, nullptr);
  std::vector<std::string> names;
  for (const AgElement* child : root_->children()) {
    names.push_back(child->name().str());
  }
  EXPECT_THAT(names, ElementsAre("a", "g", "b", "a"));
  EXPECT_THAT(root_->findChild("b")->children(), IsEmpty());
}

TEST_F(TreeTest, FindChild_IsTheFirstDirectOne) {
  ASSERT_NE(root_, nullptr);
  EXPECT_EQ(root_->findChild("a")->text(), "1");
  EXPECT_EQ(root_->findChild("h"), nullptr);
  EXPECT_EQ(root_->findChild("r"), nullptr);
  EXPECT_EQ(root_->findChild(""), nullptr);
}

TEST_F(TreeTest, FindChildren_AreAllDirectOnes) {
  ASSERT_NE(root_, nullptr);
  EXPECT_THAT(texts(root_->findChildren("a")), ElementsAre("1", "5"));
  EXPECT_EQ(root_->findLastChild("a"), root_->findChildren("a").back());
  EXPECT_EQ(root_->findLastChild("h"), nullptr);
  EXPECT_THAT(root_->findChildren("h"), IsEmpty());
}

TEST_F(TreeTest, FindAllElements_AreDescendantsInDocumentOrder) {
  ASSERT_NE(root_, nullptr);
  EXPECT_THAT(texts(root_->xmlFindAllElementsCb("a")), ElementsAre("1", "2", "3", "5", "6"));
  EXPECT_THAT(texts(root_->findChild("g")->xmlFindAllElementsCb("a")), ElementsAre("2", "3"));
}

TEST_F(TreeTest, FindAllElements_StaysWithinTheElement) {
  ASSERT_NE(root_, nullptr);
  EXPECT_THAT(root_->xmlFindAllElementsCb("r"), IsEmpty());
  EXPECT_THAT(texts(root_->findChild("g")->findChild("h")->xmlFindAllElementsCb("a")),
              ElementsAre("3"));
  EXPECT_THAT(texts(root_->findChildren("a")[1]->xmlFindAllElementsCb("a")), ElementsAre("6"));
  EXPECT_THAT(root_->findChild("b")->xmlFindAllElementsCb("a"), IsEmpty());
}

TEST_F(TreeTest, SameElement_IsTheSamePointer) {
  ASSERT_NE(root_, nullptr);
  EXPECT_EQ(root_->findChild("g"), root_->children()[1]);
  EXPECT_EQ(root_->findChild("a"), root_->xmlFindAllElementsCb("a")[0]);
}

TEST_F(TreeTest, ReadDocument_CanBeExtendedAndWritten) {
  ASSERT_NE(root_, nullptr);
  converter_.xmlAddChildNode("n", "7", root_->findChild("b"));
  EXPECT_EQ(XMLConverter::xmlSerialize(root_),
            "<r><a>1</a><g><a>2</a><h><a>3</a></h></g><b>4<n>7</n></b><a>5<a>6</a></a></r>");
}

TEST(XmlDeserialize, Source_NeedNotOutliveTheCall) {
  XMLConverter converter;
  AgElement* root = nullptr;
  {
    const std::string text = "<r><a>" + std::string(100, 'x') + "</a></r>";
    root = converter.xmlDeserialize(text);
  }
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->findChild("a")->text().str(), std::string(100, 'x'));
}

TEST(XmlDeserialize, SecondDocument_LeavesTheFirst) {
  XMLConverter converter;
  const AgElement* const first = converter.xmlDeserialize("<a>1</a>");
  EXPECT_EQ(converter.xmlDeserialize("<a>"), nullptr);
  const AgElement* const second = converter.xmlDeserialize("<b>2</b>");
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(first->text(), "1");
  EXPECT_EQ(second->text(), "2");
}

}  // namespace
