#pragma once

#include <string_view>

namespace noxxml {

class AgElement;
class AgFactory;

// Parses documents into elements of a factory. This is all that knows the parser behind it.
class Importer {
 public:
  explicit Importer(AgFactory& factory) noexcept : factory_(factory) {}

  // The root element, or null when the text is not admissible (see PreScan.h), is not well
  // formed, or has an element with more than 64 attributes or with two of one name.
  AgElement* import(std::string_view text);

 private:
  class Tree;

  AgFactory& factory_;
};

}  // namespace noxxml
