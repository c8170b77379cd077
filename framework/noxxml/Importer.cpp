#include "framework/noxxml/Importer.h"

#include <pugixml.hpp>
#include <set>
#include <string>

#include "framework/noxxml/AgFactory.h"
#include "framework/noxxml/Characters.h"
#include "framework/noxxml/Limits.h"
#include "framework/noxxml/PreScan.h"

namespace noxxml {
namespace {

// The parser keeps elements, attributes and text, nothing else; an element's text as the element's
// value up to its first child. Blanks are text where an element holds nothing else, and layout
// between children.
constexpr unsigned kOptions = pugi::parse_cdata | pugi::parse_escapes |
                              pugi::parse_wconv_attribute | pugi::parse_eol |
                              pugi::parse_ws_pcdata_single | pugi::parse_embed_pcdata;

// Enough for a document without sections, references and attributes; the parser is faster when it
// need not look for them.
constexpr unsigned kPlainOptions =
    pugi::parse_eol | pugi::parse_ws_pcdata_single | pugi::parse_embed_pcdata;

// Keeps the search for duplicates, which is quadratic, from being worth an attack.
constexpr unsigned kMaxAttributes = 64;

// How long an element is in the documents of blades, its tags included.
constexpr std::size_t kBytesPerElement = 32;

}  // namespace

// Copies the structure of a parsed document. Names and texts stay where the parser left them,
// in the factory's copy of the document. Each look at a node is a call into the parser's library,
// so there are as few as may be.
class Importer::Tree final : public pugi::xml_tree_walker {
 public:
  Tree(AgFactory& factory, bool isPlain, const Limits& limits) noexcept
      : factory_(factory),
        isPlain_(isPlain),
        maxDepth_(static_cast<int>(limits.maxDepth)),
        elementsLeft_(limits.maxElements) {}

  // Called for every node in document order. False, which ends the walk, when the document is not
  // acceptable.
  bool for_each(pugi::xml_node& node) override {
    const std::string_view name = node.name();
    const int level = depth();
    while (level_ > level) {
      --level_;
      parent_ = level_ == 0 ? nullptr : parent_->parent_;
    }
    if (name.empty()) {
      return joinText(node.parent());
    }
    if (level >= maxDepth_ || (level == 0 && root_ != nullptr) || elementsLeft_ == 0) {
      return false;
    }
    --elementsLeft_;
    AgElement* const element = factory_.createElement(legal(name), legal(node.value()), parent_);
    if (root_ == nullptr) {
      root_ = element;
    }
    parent_ = element;  // of the nodes one level below
    level_ = level + 1;
    return isPlain_ || copyAttributes(node, element);
  }

  AgElement* root() const noexcept { return root_; }

 private:
  std::string_view legal(std::string_view text) {
    return isPlain_ || legalPrefix(text) == text.size() ? text : factory_.copyText(repaired(text));
  }

  // Text behind a child, a comment or a section: all the element's pieces, at once, because adding
  // them one by one would be quadratic.
  bool joinText(const pugi::xml_node& node) {
    if (parent_ == nullptr) {
      return false;
    }
    if (!joined_.insert(parent_).second) {
      return true;
    }
    std::string text = node.value();
    for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
      if (child.type() != pugi::node_element) {
        text += child.value();
      }
    }
    AgFactory::setText(parent_, legal(factory_.copyText(text)));
    return true;
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
  const bool isPlain_;
  const int maxDepth_;
  std::size_t elementsLeft_;
  AgElement* root_ = nullptr;
  AgElement* parent_ = nullptr;  // of a node at level_
  int level_ = 0;
  std::set<const AgElement*> joined_;  // those whose text is complete
};

AgElement* Importer::import(std::string_view text) {
  const Limits bounds = limits();
  const bool isPlain = isPlainDocument(text, bounds);
  if (!isPlain && !isAdmissible(text, bounds)) {
    return nullptr;
  }
  // The encoding is fixed: a parser that guesses would see other tags than the pre-scan did.
  pugi::xml_document document;
  const pugi::xml_parse_result result =
      document.load_buffer_inplace(factory_.copyBytes(text), text.size(),
                                   isPlain ? kPlainOptions : kOptions, pugi::encoding_utf8);
  if (!result) {
    return nullptr;
  }
  factory_.expectElements(text.size() / kBytesPerElement);
  Tree tree(factory_, isPlain, bounds);
  return document.traverse(tree) ? tree.root() : nullptr;
}

}  // namespace noxxml
