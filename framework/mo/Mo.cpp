#include "framework/mo/Mo.h"

namespace mo {

const method::Value* Mo::find(std::uint32_t propertyId) const {
  const auto found = values_.find(propertyId);
  return found == values_.end() ? nullptr : &found->second;
}

void Mo::deleteObjectByConfig(Mo* object, unsigned int /*flags*/) {
  delete object;
}

}  // namespace mo
