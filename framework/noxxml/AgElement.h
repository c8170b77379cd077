#pragma once

#include <string_view>
#include <vector>

#include "framework/base/String.h"
#include "framework/noxxml/SameName.h"

namespace noxxml {

class AgFactory;

// An element of a document. Elements belong to the factory that made them and live as long as
// it does; nobody else deletes or copies one. Each element is one object, so two pointers are
// equal exactly when they mean the same element.
//
// Reading one document from several threads is safe as long as nobody adds to it.
class AgElement {
 public:
  AgElement(const AgElement&) = delete;
  AgElement& operator=(const AgElement&) = delete;

  base::String name() const;
  bool isNamed(const base::String& name) const { return isSameName(name_, name.view()); }
  // The element's own character data with references decoded, without that of its children.
  // Pieces that children or comments separate are joined; blanks between children are left out.
  base::String text() const;
  // The same without a copy, valid as long as the element.
  std::string_view textView() const { return text_; }
  // Empty when there is no such attribute.
  base::String attribute(const base::String& name) const;

  // The element's direct children in document order.
  std::vector<AgElement*> children() const;
  // The first direct child of that name, or null.
  AgElement* findChild(const base::String& name) const;
  // The last direct child of that name, or null.
  AgElement* findLastChild(const base::String& name) const {
    AgElement* found = nullptr;
    for (AgElement* child = firstChild_; child != nullptr; child = child->nextSibling_) {
      if (isSameName(child->name_, name.view())) {
        found = child;
      }
    }
    return found;
  }
  // All direct children of that name in document order.
  std::vector<AgElement*> findChildren(const base::String& name) const;
  // All elements of that name below this one, at any depth, in document order; this element
  // itself is not among them.
  std::vector<AgElement*> xmlFindAllElementsCb(const base::String& name) const;
  // Calls `visit` with every element below this one, at any depth, in document order: for who
  // looks for several names, in one walk.
  template <class Visit>
  void visitBelow(Visit visit) const {
    AgElement* each = firstChild_;
    while (each != nullptr) {
      visit(each);
      if (each->firstChild_ != nullptr) {
        each = each->firstChild_;
        continue;
      }
      while (each->nextSibling_ == nullptr) {
        each = each->parent_;
        if (each == this) {
          return;
        }
      }
      each = each->nextSibling_;
    }
  }

 private:
  friend class AgFactory;
  friend class Importer;
  friend class XMLConverter;
  friend class Writer;

  struct Attribute {
    std::string_view name;
    std::string_view value;
    Attribute* next;
  };

  AgElement(std::string_view name, std::string_view text) noexcept : name_(name), text_(text) {}

  Attribute* findAttribute(std::string_view name) const noexcept;

  // Everything below lies in the factory's memory and needs no destruction.
  std::string_view name_;
  std::string_view text_;
  AgElement* parent_ = nullptr;
  AgElement* firstChild_ = nullptr;
  AgElement* lastChild_ = nullptr;
  AgElement* nextSibling_ = nullptr;
  Attribute* firstAttribute_ = nullptr;
};

}  // namespace noxxml
