#include "framework/noxxml/AgFactory.h"

#include <cstring>
#include <new>

namespace noxxml {

AgElement* AgFactory::createElement(std::string_view name, std::string_view text,
                                    AgElement* parent) {
  void* const place = memory_.allocate(sizeof(AgElement), alignof(AgElement));
  auto* const element = new (place) AgElement(name, text);
  if (parent == nullptr) {
    return element;
  }
  element->parent_ = parent;
  if (parent->lastChild_ == nullptr) {
    parent->firstChild_ = element;
  } else {
    parent->lastChild_->nextSibling_ = element;
  }
  parent->lastChild_ = element;
  return element;
}

bool AgFactory::createAttribute(AgElement* element, std::string_view name, std::string_view value) {
  AgElement::Attribute** last = &element->firstAttribute_;
  while (*last != nullptr) {
    if ((*last)->name == name) {
      return false;
    }
    last = &(*last)->next;
  }
  void* const place = memory_.allocate(sizeof(AgElement::Attribute), alignof(AgElement::Attribute));
  *last = new (place) AgElement::Attribute{name, value, nullptr};
  return true;
}

char* AgFactory::copyBytes(std::string_view text) {
  auto* const bytes = static_cast<char*>(memory_.allocate(text.size() + 1, 1));
  if (!text.empty()) {
    std::memcpy(bytes, text.data(), text.size());
  }
  bytes[text.size()] = '\0';
  return bytes;
}

}  // namespace noxxml
