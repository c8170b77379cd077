#pragma once

#include <cstddef>
#include <memory_resource>
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
  friend class PlainParser;

  // An element under `parent`, or a root if that is null. Refers to the texts.
  AgElement* createElement(std::string_view name, std::string_view text, AgElement* parent);
  static void setText(AgElement* element, std::string_view text) { element->text_ = text; }
  // False, with nothing done, when the element has one of that name. Refers to the texts.
  bool createAttribute(AgElement* element, std::string_view name, std::string_view value);

  // With a NUL behind it.
  char* copyBytes(std::string_view text);
  std::string_view copyText(std::string_view text) { return {copyBytes(text), text.size()}; }

  // Holds a usual request or reply without a second chunk.
  static constexpr std::size_t kFirstChunk = 960;
  std::pmr::monotonic_buffer_resource memory_{kFirstChunk};
};

}  // namespace noxxml
