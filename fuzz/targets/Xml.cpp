#include <algorithm>
#include <vector>

#include "framework/noxxml/Characters.h"
#include "framework/noxxml/XMLConverter.h"
#include "fuzz/Target.h"
#include "fuzz/support/Check.h"

// A document by itself. What parses is written, and what was written parses to the same again. And
// both parsers, the one for plain documents and the general one, read it alike.

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

/// The plain parser leaves a document with a comment to the general one, and behind a document a
/// comment changes nothing.
void checkParsersAgree(const AgElement& root, const std::string& text) {
  XMLConverter converter;
  const AgElement* const general = converter.xmlDeserialize(text + "<!---->");
  check(general != nullptr, "what one parser takes the other takes", text);
  check(areAlike(root, *general), "both parsers read alike", text);
}

void checkWriting(const AgElement& root, const std::string& text) {
  const std::string written = XMLConverter::xmlSerialize(&root);
  if (written.empty()) {
    return;  // the parsers take names that are none in XML, the writer does not
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
    checkParsersAgree(*root, text);
    checkWriting(*root, text);
  }
}

}  // namespace fuzz
