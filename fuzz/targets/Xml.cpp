#include <algorithm>
#include <vector>

#include "framework/noxxml/Characters.h"
#include "framework/noxxml/XMLConverter.h"
#include "fuzz/Target.h"
#include "fuzz/support/Check.h"

// A document by itself. What parses is written, and what was written parses to the same again. And
// a plain document, which is not looked over tag by tag, reads as it does when it is.

namespace fuzz {
namespace {

using noxxml::AgElement;
using noxxml::XMLConverter;

bool areAlike(const AgElement& one, const AgElement& other) {
  const std::vector<AgElement*> children = one.children();
  const std::vector<AgElement*> otherChildren = other.children();
  return one.name() == other.name() && one.text() == other.text() &&
         std::equal(children.begin(), children.end(), otherChildren.begin(), otherChildren.end(),
                    [](const AgElement* child, const AgElement* otherChild) {
                      return areAlike(*child, *otherChild);
                    });
}

/// A document with a comment is not plain, and behind a document a comment changes nothing.
void checkBothWaysAgree(const AgElement& root, const std::string& text) {
  XMLConverter converter;
  const AgElement* const general = converter.xmlDeserialize(text + "<!---->");
  check(general != nullptr, "what is taken one way is taken the other", text);
  check(areAlike(root, *general), "both ways read alike", text);
}

void checkWriting(const AgElement& root, const std::string& text) {
  const std::string written = XMLConverter::xmlSerialize(&root);
  if (written.empty()) {
    return;  // the parser takes names that are none in XML, the writer does not
  }
  check(noxxml::legalPrefix(written) == written.size(), "what is written is legal text", text);
  XMLConverter converter;
  const AgElement* const again = converter.xmlDeserialize(written);
  check(again != nullptr, "what is written parses", written);
  check(areAlike(root, *again) && XMLConverter::xmlSerialize(again) == written,
        "what is written parses to the same again", written);
}

}  // namespace

void runXml(Input input) {
  const std::string text = textOf(input);
  XMLConverter converter;
  if (const AgElement* const root = converter.xmlDeserialize(text)) {
    checkBothWaysAgree(*root, text);
    checkWriting(*root, text);
  }
}

}  // namespace fuzz
