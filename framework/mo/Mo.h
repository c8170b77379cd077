#pragma once

#include <cstdint>
#include <map>

#include "framework/method/Config.h"
#include "framework/mo/Dn.h"

namespace mo {

/// A managed object: its class, its name and the properties that are set. Not synchronised.
class Mo {
 public:
  Mo(std::uint32_t classId, const Dn& dn) : classId_(classId), dn_(dn) {}
  virtual ~Mo() = default;

  std::uint32_t classId() const { return classId_; }
  const Dn& dn() const { return dn_; }

  void set(std::uint32_t propertyId, method::Value value) {
    values_[propertyId] = std::move(value);
  }
  /// The value, or null when the property is not set.
  const method::Value* find(std::uint32_t propertyId) const;
  const std::map<std::uint32_t, method::Value>& values() const { return values_; }

  /// Frees an object that a handler attached to its request. Null is fine. `flags` is always 0.
  static void deleteObjectByConfig(Mo* object, unsigned int flags);

 private:
  const std::uint32_t classId_;
  const Dn dn_;
  std::map<std::uint32_t, method::Value> values_;
};

}  // namespace mo
