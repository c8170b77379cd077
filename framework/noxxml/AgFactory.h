#pragma once

#include <cstddef>
#include <memory_resource>
#include <new>
#include <string_view>

#include "framework/noxxml/AgElement.h"

namespace noxxml {

// Makes the elements of one or more documents and owns them together with their texts. All of
// them go with the factory; none goes before. An unused factory owns no memory.
//
// For one thread at a time.
class AgFactory {
 public:
  AgFactory() = default;
  AgFactory(const AgFactory&) = delete;
  AgFactory& operator=(const AgFactory&) = delete;

 private:
  friend class XMLConverter;
  friend class Importer;

  // An element under `parent`, or a root if that is null. Refers to the texts.
  AgElement* createElement(std::string_view name, std::string_view text, AgElement* parent) {
    if (unused_ == 0) {
      makeRoom();
    }
    --unused_;
    auto* const element = new (room_++) AgElement(name, text);
    if (parent != nullptr) {
      element->parent_ = parent;
      (parent->lastChild_ == nullptr ? parent->firstChild_ : parent->lastChild_->nextSibling_) =
          element;
      parent->lastChild_ = element;
    }
    return element;
  }
  // Makes room at once for so many, or for as many as are worth it; they need not come.
  void expectElements(std::size_t count) {
    const unsigned wanted = count < kMostRoom ? static_cast<unsigned>(count) : kMostRoom;
    if (wanted > unused_) {
      makeRoom(wanted);
    }
  }
  static void setText(AgElement* element, std::string_view text) { element->text_ = text; }
  // False, with nothing done, when the element has one of that name. Refers to the texts.
  bool createAttribute(AgElement* element, std::string_view name, std::string_view value);

  // With a NUL behind it.
  char* copyBytes(std::string_view text);
  std::string_view copyText(std::string_view text) { return {copyBytes(text), text.size()}; }

  // Room for some more elements, at least for `size`.
  void makeRoom(unsigned size = 0);

  // Holds a usual request or reply without a second chunk.
  static constexpr std::size_t kFirstChunk = 960;
  static constexpr unsigned kMostRoom = 512;
  std::pmr::monotonic_buffer_resource memory_{kFirstChunk};
  AgElement* room_ = nullptr;  // where the next element goes
  unsigned unused_ = 0;        // elements that still fit there
  unsigned roomSize_ = 0;      // elements that fitted there at first
};

}  // namespace noxxml
