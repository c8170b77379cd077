#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "framework/base/String.h"
#include "framework/noxxml/AgElement.h"

namespace noxxml {

class AgFactory;

// Builds, writes and reads the documents that travel between the gateway and the blades.
//
// Elements belong to the converter's factory and stay valid while that lives. One converter is
// for one thread at a time; converters of distinct factories are independent. Nothing blocks.
//
// Texts are UTF-8. A byte that is not, or a character that XML 1.0 cannot carry (most control
// characters), becomes U+FFFD when it is added to a document and when it is read from one. Every
// other text comes back exactly as it was added, but for blanks alone in an element that has
// children, which are taken for layout. A carriage return that stands unescaped in a
// document is read as a line feed.
//
// Whatever a peer sends, nothing here throws but std::bad_alloc.
class XMLConverter {
 public:
  // Borrows the factory, which must outlive the converter; null makes the converter own one.
  explicit XMLConverter(AgFactory* factory = nullptr);
  ~XMLConverter();
  XMLConverter(const XMLConverter&) = delete;
  XMLConverter& operator=(const XMLConverter&) = delete;

  // A new element without a parent, in the namespace `ns` unless that is empty. Never null. Any
  // name is taken; whether it is legal is decided when the document is written.
  AgElement* xmlAddRootNode(const base::String& name, const base::String& ns);
  // A new last child of `parent` with `value` as its text, which may be empty. Null when
  // `parent` is. The parent must belong to this converter's factory.
  AgElement* xmlAddChildNode(const base::String& name, const base::String& value,
                             AgElement* parent);
  // Sets an attribute, replacing an earlier one of that name. Nothing when `element` is null.
  void xmlAddAttr(const base::String& name, const base::String& value, AgElement* element);

  // The element and all below it as a document without declaration, indentation or line end.
  // Empty when `element` is null, or when any name in it is not a legal XML name without a
  // colon: such a name often comes from a peer, and no markup is ever made of it.
  static std::string xmlSerialize(const AgElement* element);

  // The root element of a document, or null when it cannot be parsed, is beyond the limits, or
  // has a document type declaration. Adds to the converter's factory in either case.
  AgElement* xmlDeserialize(std::string_view text);

  // The direct children of the root, by name, with their own character data. A child that is
  // present with no text is an entry with an empty value; of several with one name the last one
  // counts. Attributes and deeper levels are left out. Empty when the document cannot be parsed
  // or its root has another name.
  static std::map<base::String, base::String> xml2map(std::string_view text,
                                                      const base::String& rootName);
  // The same of an element in hand; empty when it is null or has another name.
  static std::map<base::String, base::String> xml2map(const AgElement* element,
                                                      const base::String& rootName);

 private:
  // A copy in the factory's memory of what XML can carry of the text.
  std::string_view keep(std::string_view text);

  std::unique_ptr<AgFactory> own_;
  AgFactory* factory_;
};

}  // namespace noxxml
