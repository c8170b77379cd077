#include <gtest/gtest.h>

#include <string>

#include "framework/noxxml/AgFactory.h"
#include "framework/noxxml/Limits.h"
#include "framework/noxxml/XMLConverter.h"

// Documents that are built and written.

namespace {

using noxxml::AgElement;
using noxxml::AgFactory;
using noxxml::XMLConverter;

const std::string kReplacement = "\xef\xbf\xbd";

// A root "r" with one child "c" of that text.
std::string written(const base::String& text) {
  XMLConverter converter;
  AgElement* const root = converter.xmlAddRootNode("r", "");
  converter.xmlAddChildNode("c", text, root);
  return XMLConverter::xmlSerialize(root);
}

// What a peer reads back of it.
std::string readBack(const base::String& text) {
  XMLConverter reader;
  const AgElement* const root = reader.xmlDeserialize(written(text));
  const AgElement* const child = root == nullptr ? nullptr : root->findChild("c");
  return child == nullptr ? "(unparsable)" : child->text().str();
}

std::string rootNamed(const base::String& name) {
  XMLConverter converter;
  return XMLConverter::xmlSerialize(converter.xmlAddRootNode(name, ""));
}

TEST(XmlSerialize, Reply_IsCompact) {
  AgFactory factory;
  XMLConverter converter(&factory);
  AgElement* const root = converter.xmlAddRootNode("heartbeatResponse", "");
  AgElement* const response = converter.xmlAddChildNode("response", "", root);
  converter.xmlAddChildNode("code", "100", response);
  converter.xmlAddChildNode("message", "OK", response);
  EXPECT_EQ(converter.xmlSerialize(root),
            "<heartbeatResponse><response><code>100</code><message>OK</message></response>"
            "</heartbeatResponse>");
}

TEST(XmlSerialize, Null_IsEmpty) {
  EXPECT_EQ(XMLConverter::xmlSerialize(nullptr), "");
}

TEST(XmlSerialize, Twice_GivesTheSame) {
  XMLConverter converter;
  AgElement* const root = converter.xmlAddRootNode("r", "");
  converter.xmlAddChildNode("a", "1", root);
  const std::string first = converter.xmlSerialize(root);
  EXPECT_EQ(first, "<r><a>1</a></r>");
  EXPECT_EQ(converter.xmlSerialize(root), first);
}

TEST(XmlSerialize, InnerElement_IsWrittenAlone) {
  XMLConverter converter;
  AgElement* const root = converter.xmlAddRootNode("r", "");
  AgElement* const first = converter.xmlAddChildNode("a", "1", root);
  converter.xmlAddChildNode("b", "2", root);
  EXPECT_EQ(converter.xmlSerialize(first), "<a>1</a>");
}

TEST(XmlAddChildNode, EmptyValue_IsAnEmptyElement) {
  EXPECT_EQ(written(""), "<r><c/></r>");
  EXPECT_EQ(readBack(""), "");
}

TEST(XmlAddChildNode, NullParent_GivesNull) {
  XMLConverter converter;
  EXPECT_EQ(converter.xmlAddChildNode("a", "1", nullptr), nullptr);
}

TEST(XmlAddChildNode, SameNameTwice_KeepsBothInOrder) {
  XMLConverter converter;
  AgElement* const root = converter.xmlAddRootNode("r", "");
  converter.xmlAddChildNode("a", "1", root);
  converter.xmlAddChildNode("a", "2", root);
  EXPECT_EQ(converter.xmlSerialize(root), "<r><a>1</a><a>2</a></r>");
}

TEST(XmlAddChildNode, Arguments_NeedNotOutliveTheCall) {
  XMLConverter converter;
  AgElement* root = nullptr;
  {
    const base::String name = std::string(100, 'n');
    const base::String value = std::string(100, 'v');
    root = converter.xmlAddRootNode(name, "");
    converter.xmlAddChildNode(name, value, root);
  }
  const std::string n(100, 'n');
  EXPECT_EQ(converter.xmlSerialize(root),
            "<" + n + "><" + n + ">" + std::string(100, 'v') + "</" + n + "></" + n + ">");
}

TEST(XmlAddRootNode, Namespace_BecomesAnAttribute) {
  XMLConverter converter;
  AgElement* const root = converter.xmlAddRootNode("r", "urn:a&b");
  EXPECT_EQ(converter.xmlSerialize(root), "<r xmlns=\"urn:a&amp;b\"/>");
}

TEST(XmlAddAttr, Value_IsEscapedAndReadBack) {
  XMLConverter converter;
  AgElement* const root = converter.xmlAddRootNode("r", "");
  converter.xmlAddAttr("a", "<\"'&>\t\n\r ", root);
  const std::string text = converter.xmlSerialize(root);
  EXPECT_EQ(text, "<r a=\"&lt;&quot;'&amp;&gt;&#9;&#10;&#13; \"/>");
  XMLConverter reader;
  const AgElement* const back = reader.xmlDeserialize(text);
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(back->attribute("a"), "<\"'&>\t\n\r ");
}

TEST(XmlAddAttr, SameNameTwice_Replaces) {
  XMLConverter converter;
  AgElement* const root = converter.xmlAddRootNode("r", "");
  converter.xmlAddAttr("a", "1", root);
  converter.xmlAddAttr("b", "2", root);
  converter.xmlAddAttr("a", "3", root);
  EXPECT_EQ(converter.xmlSerialize(root), "<r a=\"3\" b=\"2\"/>");
}

TEST(XmlAddAttr, NullElement_IsIgnored) {
  XMLConverter converter;
  converter.xmlAddAttr("a", "1", nullptr);
}

TEST(XmlSerialize, BlankTextBeforeAChild_IsNoLayout) {
  for (const char* text : {" ", "\t", "\n", "\r", "\n\t\t", "  \r\n"}) {
    XMLConverter converter;
    AgElement* const root = converter.xmlAddRootNode("r", "");
    converter.xmlAddChildNode("c", "v", converter.xmlAddChildNode("p", text, root));
    XMLConverter reader;
    const AgElement* const back = reader.xmlDeserialize(XMLConverter::xmlSerialize(root));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->findChild("p")->text(), text);
  }
}

TEST(XmlSerialize, TextBeforeAChild_StandsAsItIs) {
  XMLConverter converter;
  AgElement* const root = converter.xmlAddRootNode("r", "");
  converter.xmlAddChildNode("c", "v", converter.xmlAddChildNode("p", " a ", root));
  EXPECT_EQ(XMLConverter::xmlSerialize(root), "<r><p> a <c>v</c></p></r>");
}

TEST(XmlSerialize, MarkupInText_IsEscaped) {
  EXPECT_EQ(written("a<b>&\"c\"'d'"), "<r><c>a&lt;b&gt;&amp;\"c\"'d'</c></r>");
  EXPECT_EQ(readBack("</c></r><x>"), "</c></r><x>");
  EXPECT_EQ(readBack("&amp;&lt;&#65;"), "&amp;&lt;&#65;");
  EXPECT_EQ(readBack("]]>"), "]]>");
  EXPECT_EQ(readBack("<![CDATA[x]]>"), "<![CDATA[x]]>");
  EXPECT_EQ(readBack("tcp://<ip>:<port> \"is\" missing"), "tcp://<ip>:<port> \"is\" missing");
}

TEST(XmlSerialize, WhiteSpaceInText_IsReadBackExactly) {
  for (const char* text : {" ", "  a  ", "\t\n", "a\r\nb", "\r", "\n\n", "a\tb"}) {
    EXPECT_EQ(readBack(text), text);
  }
}

TEST(XmlSerialize, TextBeyondAscii_IsReadBackExactly) {
  for (const char* text :
       {"\xc3\xa4", "\xe2\x82\xac", "\xf0\x9f\x98\x80", "\xed\x9f\xbf", "\xee\x80\x80",
        "\xef\xbf\xbd", "\xf4\x8f\xbf\xbf", "\x7f", "\xc2\x80"}) {
    EXPECT_EQ(readBack(text), text);
  }
}

TEST(XmlSerialize, ControlCharacters_AreReplaced) {
  for (int c = 1; c < 0x20; ++c) {
    if (c == '\t' || c == '\n' || c == '\r') {
      continue;
    }
    const std::string text = std::string("a") + static_cast<char>(c) + "b";
    EXPECT_EQ(readBack(text), "a" + kReplacement + "b") << c;
  }
}

TEST(XmlSerialize, ControlCharacterAnywhereInALongText_IsReplaced) {
  const std::string plain = "abcdefghijklmnopqrstuvwx";
  for (const char c : {'\x01', '\x1f', '\0', '\x80', '\xff'}) {
    for (std::size_t at = 0; at < plain.size(); ++at) {
      std::string text = plain;
      text[at] = c;
      EXPECT_EQ(readBack(text), plain.substr(0, at) + kReplacement + plain.substr(at + 1));
    }
  }
}

TEST(XmlSerialize, Nul_IsReplaced) {
  EXPECT_EQ(readBack(std::string("a\0b", 3)), "a" + kReplacement + "b");
  EXPECT_EQ(readBack(std::string("\0", 1)), kReplacement);
}

TEST(XmlSerialize, InvalidUtf8_IsReplacedByteByByte) {
  EXPECT_EQ(readBack("a\xff"
                     "b"),
            "a" + kReplacement + "b");
  EXPECT_EQ(readBack("\x80"), kReplacement);
  EXPECT_EQ(readBack("\xc3"), kReplacement) << "cut at the end";
  EXPECT_EQ(readBack("\xc3("), kReplacement + "(");
  EXPECT_EQ(readBack("\xe2\x82"), kReplacement + kReplacement);
  EXPECT_EQ(readBack("\xc0\xaf"), kReplacement + kReplacement) << "over-long";
  EXPECT_EQ(readBack("\xe0\x80\xaf"), kReplacement + kReplacement + kReplacement) << "over-long";
  EXPECT_EQ(readBack("\xed\xa0\x80"), kReplacement + kReplacement + kReplacement) << "surrogate";
  EXPECT_EQ(readBack("\xf4\x90\x80\x80"), kReplacement + kReplacement + kReplacement + kReplacement)
      << "above U+10FFFF";
}

TEST(XmlSerialize, NonCharacters_AreReplacedWhole) {
  EXPECT_EQ(readBack("\xef\xbf\xbe"), kReplacement);
  EXPECT_EQ(readBack("\xef\xbf\xbf"), kReplacement);
}

TEST(XmlSerialize, EveryPairOfBytes_ReadsBackAsWrittenOrRepaired) {
  for (unsigned first = 0; first < 256; ++first) {
    for (unsigned second = 0; second < 256; ++second) {
      const char bytes[] = {static_cast<char>(first), static_cast<char>(second)};
      const std::string text(bytes, 2);
      const std::string back = readBack(text);
      const bool ascii = first < 0x80 && second < 0x80;
      if (ascii && first >= 0x20 && second >= 0x20) {
        ASSERT_EQ(back, text) << first << ' ' << second;
      } else if (back != text) {
        ASSERT_NE(back.find(kReplacement), std::string::npos) << first << ' ' << second;
      }
    }
  }
}

TEST(XmlSerialize, MegabyteText_IsReadBackExactly) {
  noxxml::setLimits({.maxBytes = 8u << 20});
  const std::string text = std::string(1u << 20, 'x') + "&";
  const std::string back = readBack(text);
  noxxml::setLimits({});
  EXPECT_TRUE(back == text);
}

TEST(XmlSerialize, IllegalRootName_GivesNothing) {
  for (const char* name :
       {"",      " ",    "a b",      " a",           "a ",       "<",           "<x>",
        "a<b",   "a>",   "a/",       "/a",           "1a",       "-a",          ".a",
        "a&b",   "a\"",  "a'",       "a=b",          "a\n",      "a\tb",        "!a",
        "?a",    "a:b",  ":",        "a;",           "\x01",     "a\x7f",       "\xff",
        "a\xff", "\xc3", "\xc2\xb7", "\xe2\x86\x90", "\xc3\x97", "\xed\xa0\x80"}) {
    EXPECT_EQ(rootNamed(name), "") << name;
  }
  EXPECT_EQ(rootNamed(std::string("a\0b", 3)), "");
}

TEST(XmlSerialize, LegalRootName_IsWritten) {
  for (const char* name : {"a", "_", "A1", "a-b.c_d", "heartbeatResponse", "\xc3\xa4", "a\xc2\xb7",
                           "\xe4\xb8\xad", "\xf0\x90\x80\x80", "\xef\xbf\xbd"}) {
    EXPECT_EQ(rootNamed(name), std::string("<") + name + "/>");
  }
}

TEST(XmlSerialize, IllegalNameBelow_GivesNothing) {
  XMLConverter converter;
  AgElement* const root = converter.xmlAddRootNode("r", "");
  AgElement* const child = converter.xmlAddChildNode("a", "", root);
  converter.xmlAddChildNode("<b>", "1", child);
  EXPECT_EQ(converter.xmlSerialize(root), "");
}

TEST(XmlSerialize, IllegalAttributeName_GivesNothing) {
  XMLConverter converter;
  AgElement* const root = converter.xmlAddRootNode("r", "");
  converter.xmlAddAttr("a b", "1", root);
  EXPECT_EQ(converter.xmlSerialize(root), "");
}

TEST(XmlSerialize, TreeOfHundredThousandLevels_IsWritten) {
  XMLConverter converter;
  AgElement* const root = converter.xmlAddRootNode("a", "");
  AgElement* at = root;
  for (int i = 1; i < 100000; ++i) {
    at = converter.xmlAddChildNode("a", "", at);
  }
  const std::string text = converter.xmlSerialize(root);
  EXPECT_EQ(text.size(), 99999u * 7 + 4);
  EXPECT_EQ(root->xmlFindAllElementsCb("a").size(), 99999u);
}

TEST(XMLConverter, OwnFactory_LivesAsLongAsTheConverter) {
  XMLConverter converter(nullptr);
  AgElement* const root = converter.xmlAddRootNode("r", "");
  EXPECT_EQ(root->name(), "r");
}

TEST(XMLConverter, BorrowedFactory_OutlivesTheConverter) {
  AgFactory factory;
  AgElement* root = nullptr;
  {
    XMLConverter converter(&factory);
    root = converter.xmlAddRootNode("r", "");
    converter.xmlAddChildNode("a", "a value that is longer than any short string", root);
  }
  EXPECT_EQ(root->findChild("a")->text(), "a value that is longer than any short string");
}

TEST(XMLConverter, TwoOnOneFactory_BuildSeparateDocuments) {
  AgFactory factory;
  XMLConverter first(&factory);
  XMLConverter second(&factory);
  AgElement* const a = first.xmlAddRootNode("a", "");
  AgElement* const b = second.xmlAddRootNode("b", "");
  first.xmlAddChildNode("x", "1", a);
  EXPECT_EQ(first.xmlSerialize(a), "<a><x>1</x></a>");
  EXPECT_EQ(second.xmlSerialize(b), "<b/>");
}

}  // namespace
