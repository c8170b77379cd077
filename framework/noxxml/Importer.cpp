#include "framework/noxxml/Importer.h"

#include <pugixml.hpp>
#include <string>

#include "framework/noxxml/AgFactory.h"
#include "framework/noxxml/Characters.h"
#include "framework/noxxml/Limits.h"
#include "framework/noxxml/PlainParser.h"
#include "framework/noxxml/PreScan.h"

namespace noxxml {
namespace {

// The parser keeps elements, attributes and text, nothing else. Blanks are text where an element
// holds nothing else, and layout between children.
constexpr unsigned kOptions = pugi::parse_cdata | pugi::parse_escapes |
                              pugi::parse_wconv_attribute | pugi::parse_eol |
                              pugi::parse_ws_pcdata_single;

// Keeps the search for duplicates, which is quadratic, from being worth an attack.
constexpr unsigned kMaxAttributes = 64;

}  // namespace

// Copies the structure of a parsed document. Names and texts stay where the parser left them,
// in the factory's copy of the document.
class Importer::Tree {
 public:
  explicit Tree(AgFactory& factory) noexcept : factory_(factory) {}

  // Null when an element has unacceptable attributes. The recursion is as deep as the document,
  // which the limits bound.
  AgElement* copy(const pugi::xml_node& node, AgElement* parent) {
    AgElement* const element = factory_.createElement(legal(node.name()), {}, parent);
    if (!copyAttributes(node, element)) {
      return nullptr;
    }
    std::string_view text;
    bool isSplit = false;
    for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
      if (child.type() == pugi::node_element) {
        if (copy(child, element) == nullptr) {
          return nullptr;
        }
      } else if (text.empty()) {
        text = child.value();
      } else {
        isSplit = true;
      }
    }
    factory_.setText(element, legal(isSplit ? joined(node) : text));
    return element;
  }

 private:
  std::string_view legal(std::string_view text) {
    return legalPrefix(text) == text.size() ? text : factory_.copyText(repaired(text));
  }

  // All pieces of text at once: adding them one by one would be quadratic.
  std::string_view joined(const pugi::xml_node& node) {
    std::string text;
    for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
      if (child.type() != pugi::node_element) {
        text += child.value();
      }
    }
    return factory_.copyText(text);
  }

  bool copyAttributes(const pugi::xml_node& node, AgElement* element) {
    unsigned count = 0;
    for (pugi::xml_attribute each = node.first_attribute(); each; each = each.next_attribute()) {
      if (++count > kMaxAttributes ||
          !factory_.createAttribute(element, legal(each.name()), legal(each.value()))) {
        return false;
      }
    }
    return true;
  }

  AgFactory& factory_;
};

AgElement* Importer::import(std::string_view text) {
  const Limits bounds = limits();
  if (text.size() > bounds.maxBytes) {
    return nullptr;
  }
  char* const copy = factory_.copyBytes(text);
  if (text.size() <= PlainParser::kMostBytes) {
    PlainParser plain(factory_, {copy, text.size()}, bounds.maxDepth);
    if (AgElement* const root = plain.parse()) {
      return root;
    }
  }
  if (!isAdmissible(text, bounds)) {
    return nullptr;
  }
  // The encoding is fixed: a parser that guesses would see other tags than the pre-scan did.
  pugi::xml_document document;
  const pugi::xml_parse_result result =
      document.load_buffer_inplace(copy, text.size(), kOptions, pugi::encoding_utf8);
  if (!result) {
    return nullptr;
  }
  return Tree(factory_).copy(document.document_element(), nullptr);
}

}  // namespace noxxml
