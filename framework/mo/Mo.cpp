#include "framework/mo/Mo.h"

#include "framework/filter/Filter.h"

namespace mo {

// Inline, because nothing outside this file calls them, which a compiler that makes code for a
// shared library cannot know.
inline bool Mo::isIn(std::uint32_t propertyGroup, std::uint32_t propertyId) const {
  const PropertyInfo* const info = classInfo_ != nullptr ? classInfo_->find(propertyId) : nullptr;
  return ((info != nullptr ? info->group : kStateGroup) & propertyGroup) != 0;
}

inline method::Config Mo::packed(method::ValueMap&& values, std::uint32_t propertyGroup,
                                 const ChangeFlags* only, unsigned int depth,
                                 std::uint32_t flags) const {
  const ChangeFlags& wanted = only == nullptr ? changeFlags_ : *only;
  auto next = wanted.begin();  // both are in ascending order
  values.keepIf([&](std::uint32_t propertyId) {
    while (next != wanted.end() && *next < propertyId) {
      ++next;
    }
    const bool isWanted = only == nullptr || (next != wanted.end() && *next == propertyId);
    return isWanted && isIn(propertyGroup, propertyId);
  });
  if (only != nullptr && only->size() != values.size()) {
    for (const std::uint32_t propertyId : *only) {
      if (isIn(propertyGroup, propertyId) && values.find(propertyId) == nullptr) {
        values.set(propertyId, method::Value());
      }
    }
  }
  method::Config config(classId_, dn_, std::move(values), flags);
  for (std::size_t i = 0; depth > 0 && i < attached_.size(); ++i) {
    config.addChild(attached_[i]->toConfig(propertyGroup, nullptr, depth - 1, flags));
  }
  return config;
}

Mo* Mo::attach(std::unique_ptr<Mo> object) {
  return object != nullptr ? attached_.emplace_back(std::move(object)).get() : nullptr;
}

std::vector<Mo*> Mo::findChild(std::uint32_t classId, const filter::Filter* filter) const {
  std::vector<Mo*> found;
  for (const std::unique_ptr<Mo>& object : attached_) {
    if (object->classId() == classId && (filter == nullptr || filter->matches(*object))) {
      found.push_back(object.get());
    }
  }
  return found;
}

base::String Mo::stringify(std::uint32_t propertyId) const {
  const PropertyInfo* const info = classInfo_ != nullptr ? classInfo_->find(propertyId) : nullptr;
  if (info == nullptr || info->enumeration == nullptr) {
    return {};
  }
  const method::Value* const value = find(propertyId);
  const auto* const number = value != nullptr ? std::get_if<std::uint8_t>(value) : nullptr;
  return base::String(number != nullptr ? info->enumeration->textOf(*number)
                                        : info->enumeration->otherwise);
}

method::Config Mo::toConfig(std::uint32_t propertyGroup, const ChangeFlags* only,
                            unsigned int depth, std::uint32_t flags) const& {
  return packed(method::ValueMap(values_), propertyGroup, only, depth, flags);
}

method::Config Mo::toConfig(std::uint32_t propertyGroup, const ChangeFlags* only,
                            unsigned int depth, std::uint32_t flags) && {
  return packed(std::move(values_), propertyGroup, only, depth, flags);
}

void Mo::renew(Dn dn) {
  dn_ = std::move(dn);
  values_.clear();
  changeFlags_.clear();
  attached_.clear();
}

void Mo::deleteObjectByConfig(Mo* object, unsigned int /*flags*/) {
  delete object;
}

std::size_t fromConfig(const method::Config& config, Mo& object, std::uint32_t propertyGroup) {
  const ClassInfo* const objectClass = object.classInfo();
  if (objectClass == nullptr || objectClass->id != config.classId()) {
    return config.values().size();
  }
  std::size_t left = 0;
  for (const auto& [propertyId, value] : config.values()) {
    const PropertyInfo* const info = objectClass->find(propertyId);
    const method::ValueKind kind = method::kindOf(value);
    if (info == nullptr || (info->group & propertyGroup) == 0) {
      ++left;
    } else if (kind == info->kind) {
      object.set(propertyId, value);
    } else if (kind == method::ValueKind::kNone) {
      object.clear(propertyId);
    } else {
      ++left;
    }
  }
  return left;
}

}  // namespace mo
