#include "framework/noxxml/Characters.h"
#include "framework/noxxml/XMLConverter.h"
#include "fuzz/Target.h"
#include "fuzz/support/Check.h"

// A document by itself: what parses is written, and what was written parses to the same again.

namespace fuzz {
namespace {

/// True when every name below can be written: the parser takes names that are none in XML.
bool isWritable(const noxxml::AgElement* element) {
  return !noxxml::XMLConverter::xmlSerialize(element).empty();
}

}  // namespace

void runXml(Input input) {
  const std::string text = textOf(input);
  noxxml::XMLConverter converter;
  const noxxml::AgElement* const root = converter.xmlDeserialize(text);
  if (root == nullptr || !isWritable(root)) {
    return;
  }
  const std::string written = noxxml::XMLConverter::xmlSerialize(root);
  check(noxxml::legalPrefix(written) == written.size(), "what is written is legal text", text);
  const noxxml::AgElement* const again = converter.xmlDeserialize(written);
  check(again != nullptr, "what is written parses", written);
  check(noxxml::XMLConverter::xmlSerialize(again) == written,
        "what is written parses to the same again", written);
  check(noxxml::XMLConverter::xml2map(again, root->name()) ==
            noxxml::XMLConverter::xml2map(root, root->name()),
        "tags stay as they are", written);
}

}  // namespace fuzz
