#include "framework/noxxml/AgFactory.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace noxxml {

void AgFactory::makeRoom(unsigned size) {
  constexpr unsigned kFirst = 4;
  roomSize_ = std::max(size, std::clamp(2 * roomSize_, kFirst, kMostRoom));
  unused_ = roomSize_;
  room_ =
      static_cast<AgElement*>(memory_.allocate(roomSize_ * sizeof(AgElement), alignof(AgElement)));
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
