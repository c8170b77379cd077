#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "framework/noxxml/PreScan.h"
#include "framework/noxxml/XMLConverter.h"

// Plain documents take a way of their own. Every text is read twice: as it is, and behind a
// comment, which is never plain. Both must see the same document, or none.

namespace {

using noxxml::AgElement;
using noxxml::XMLConverter;

std::string described(const AgElement* element) {
  if (element == nullptr) {
    return "none";
  }
  std::string text = element->name().str() + "[" + element->text().str() + "](";
  for (const AgElement* child : element->children()) {
    text += described(child);
  }
  return text + ")";
}

std::string read(std::string_view document) {
  XMLConverter converter;
  return described(converter.xmlDeserialize(document));
}

std::string readTheGeneralWay(std::string_view document) {
  return read("<!---->" + std::string(document));
}

const std::vector<std::string>& documents() {
  static const std::vector<std::string> all{
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r>\n  <a>1</a>\n  <b> two </b>\n</r>\n",
      std::string("<platformInfoUpdateRequest><Cpu><minus1>0.5</minus1></Cpu>") +
          "<application><id>a-1</id></application><application/></platformInfoUpdateRequest>",
      "<r><a></a><b/>  </r>",
      "<r>  </r>",
      "<r>x<b/></r>",
      "<r>\t<b>\n</b>]]>y</r>",
      "<r>x<b>2</b>y</r>",
      "<r><a>&lt;&#65;</a><b c='d'>e</b><![CDATA[f]]></r>",
  };
  return all;
}

TEST(PlainDocument, HasTheseElements) {
  EXPECT_EQ(read(documents()[0]), "r[](a[1]()b[ two ]())");
  EXPECT_EQ(read(documents()[1]),
            "platformInfoUpdateRequest[](Cpu[](minus1[0.5]())application[](id[a-1]())"
            "application[]())");
  EXPECT_EQ(read(documents()[2]), "r[](a[]()b[]())");
  EXPECT_EQ(read(documents()[3]), "r[  ]()");
  EXPECT_EQ(read(documents()[4]), "r[x](b[]())");
  EXPECT_EQ(read(documents()[5]), "r[]]>y](b[\n]())");
}

TEST(PlainDocument, EitherWay_IsTheSame) {
  for (const std::string& document : documents()) {
    EXPECT_NE(read(document), "none");
    EXPECT_EQ(read(document), readTheGeneralWay(document)) << document;
  }
}

TEST(PlainDocument, NotQuiteOne_IsNoneEitherWay) {
  const std::vector<std::string> texts{
      "",
      "<",
      "<r",
      "<r>",
      "<r></",
      "<r></r",
      "<r></rr>",
      "<r></ r>",
      "</r>",
      "<r/><r/>",
      "<r></r>x",
      "x<r></r>",
      "<r></r>>",
      "<1></1>",
      "<-r></-r>",
      "<r><a></r>",
      "<r></a></r>",
      "<?xml version=<r/>",
      "<r></r><?",
      "<r/></r>",
      "<r//>",
      "<r><a/</r>",
      "<r>x<",
      "<?xml version='1.0'?>",
      std::string("<r/>\0", 5),
      std::string("<r>\0</r>", 8),
  };
  for (const std::string& text : texts) {
    EXPECT_EQ(read(text), "none") << text;
    EXPECT_EQ(readTheGeneralWay(text), "none") << text;
  }
}

TEST(PlainDocument, IsToldFromOthers) {
  const auto isPlain = [](std::string_view text) {
    return noxxml::isPlainDocument(text, noxxml::Limits());
  };
  for (std::size_t i = 0; i < 6; ++i) {
    EXPECT_TRUE(isPlain(documents()[i])) << documents()[i];
  }
  EXPECT_TRUE(isPlain("<r>\xc3\xa4\r\n</r>"));
  for (const char* text : {"", "<r", "x<r/>", "<r/>x", "<r/>>", "<!----><r/>", "<r/><?p?>",
                           "<r>&lt;</r>", "<r a='b'/>", "<?xml", "<?xml version='1.0'?>",
                           "<?xml ?>x<r/>", "<r>\x01</r>", "<r>\xff</r>"}) {
    EXPECT_FALSE(isPlain(text)) << text;
  }
  EXPECT_FALSE(isPlain(std::string("<r/>\0", 5)));
  EXPECT_FALSE(isPlain("<r>" + std::string(65536, 'x') + "</r>"));
  EXPECT_FALSE(noxxml::isPlainDocument("<r/>", {.maxBytes = 3}));
}

TEST(PlainDocument, DeeperThanTheLimit_IsNoneEitherWay) {
  std::string text;
  for (int i = 0; i < 65; ++i) {
    text = "<a>" + text + "</a>";
  }
  EXPECT_EQ(read(text), "none");
  EXPECT_EQ(readTheGeneralWay(text), "none");
  text = text.substr(3, text.size() - 7);
  EXPECT_NE(read(text), "none");
  EXPECT_EQ(read(text), readTheGeneralWay(text));
}

TEST(PlainDocument, EveryByteChanged_EitherWayIsTheSame) {
  for (const std::string& document : documents()) {
    for (std::size_t at = 0; at < document.size(); ++at) {
      for (const char byte : std::string("<>/&? !-x9\n\r\t\x01\x7f\xc3'\"=.", 20)) {
        std::string changed = document;
        changed[at] = byte;
        EXPECT_EQ(read(changed), readTheGeneralWay(changed)) << changed;
      }
    }
  }
}

TEST(PlainDocument, PiecesInAnyOrder_EitherWayIsTheSame) {
  const std::vector<std::string> pieces{"<a>", "</a>", "<a/>", "<b>", "</b>", "<", ">",  "/",
                                        "x",   " ",    "\n",   "&",   "</",   "a", "<?", "?>"};
  std::mt19937 random(4711);
  std::uniform_int_distribution<std::size_t> piece(0, pieces.size() - 1);
  std::uniform_int_distribution<int> length(1, 9);
  int documentsSeen = 0;
  for (int i = 0; i < 20000; ++i) {
    std::string text = "<a>";
    for (int left = length(random); left > 0; --left) {
      text += pieces[piece(random)];
    }
    text += i % 2 == 0 ? "</a>" : "";
    const std::string direct = read(text);
    ASSERT_EQ(direct, readTheGeneralWay(text)) << text;
    documentsSeen += direct == "none" ? 0 : 1;
  }
  EXPECT_GT(documentsSeen, 500);
}

}  // namespace
