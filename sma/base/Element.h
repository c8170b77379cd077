#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sma {

/// An element of a document under construction: a plain value that can be copied, changed and at
/// last written.
struct Element {
  std::string name;
  std::string text;
  std::vector<Element> children;

  /// Appends a child. The result is valid until the next child is added.
  Element& add(std::string_view childName, std::string_view childText = {});
  /// The element at a path of names below this one such as "Memory/minus1", the first of its name
  /// at each step; null when there is none.
  Element* find(std::string_view path);
};

/// The document without blanks between its elements. Texts are escaped.
std::string toXml(const Element& root);

}  // namespace sma
