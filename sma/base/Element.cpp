#include "sma/base/Element.h"

#include <algorithm>

#include "framework/noxxml/AgFactory.h"
#include "framework/noxxml/XMLConverter.h"

namespace sma {
namespace {

void addChildren(const Element& from, noxxml::AgElement* to, noxxml::XMLConverter& converter) {
  for (const Element& child : from.children) {
    addChildren(child, converter.xmlAddChildNode(child.name, child.text, to), converter);
  }
}

}  // namespace

Element& Element::add(std::string_view childName, std::string_view childText) {
  return children.emplace_back(Element{std::string(childName), std::string(childText), {}});
}

Element* Element::find(std::string_view path) {
  const std::size_t slash = path.find('/');
  const std::string_view step = path.substr(0, slash);
  const auto child = std::find_if(children.begin(), children.end(),
                                  [step](const Element& each) { return each.name == step; });
  if (child == children.end()) {
    return nullptr;
  }
  return slash == std::string_view::npos ? &*child : child->find(path.substr(slash + 1));
}

std::string toXml(const Element& root) {
  noxxml::AgFactory factory;
  noxxml::XMLConverter converter(&factory);
  noxxml::AgElement* top = converter.xmlAddRootNode(root.name, "");
  addChildren(root, top, converter);
  return noxxml::XMLConverter::xmlSerialize(top);
}

}  // namespace sma
