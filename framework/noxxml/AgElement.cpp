#include "framework/noxxml/AgElement.h"

#include <type_traits>

namespace noxxml {

static_assert(std::is_trivially_destructible_v<AgElement>,
              "the factory frees its memory without destroying elements one by one");

base::String AgElement::name() const {
  return base::String(name_);
}

base::String AgElement::text() const {
  return base::String(text_);
}

base::String AgElement::attribute(const base::String& name) const {
  const Attribute* const found = findAttribute(name.view());
  return found == nullptr ? base::String() : base::String(found->value);
}

AgElement::Attribute* AgElement::findAttribute(std::string_view name) const noexcept {
  Attribute* each = firstAttribute_;
  while (each != nullptr && each->name != name) {
    each = each->next;
  }
  return each;
}

std::vector<AgElement*> AgElement::children() const {
  std::vector<AgElement*> found;
  for (AgElement* child = firstChild_; child != nullptr; child = child->nextSibling_) {
    found.push_back(child);
  }
  return found;
}

AgElement* AgElement::findChild(const base::String& name) const {
  AgElement* child = firstChild_;
  while (child != nullptr && !isSameName(child->name_, name.view())) {
    child = child->nextSibling_;
  }
  return child;
}

std::vector<AgElement*> AgElement::findChildren(const base::String& name) const {
  std::vector<AgElement*> found;
  for (AgElement* child = firstChild_; child != nullptr; child = child->nextSibling_) {
    if (isSameName(child->name_, name.view())) {
      found.push_back(child);
    }
  }
  return found;
}

std::vector<AgElement*> AgElement::xmlFindAllElementsCb(const base::String& name) const {
  std::vector<AgElement*> found;
  visitBelow([&](AgElement* each) {
    if (each->isNamed(name)) {
      found.push_back(each);
    }
  });
  return found;
}

}  // namespace noxxml
