#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "framework/base/BioStream.h"
#include "framework/method/Value.h"
#include "framework/method/ValueMap.h"
#include "framework/mo/Dn.h"

namespace method {

/// A managed object as an argument of a method: class, name, flags and the values of its set
/// properties. A plain value; layout in docs/stimulus.md.
class Config {
 public:
  Config() = default;
  Config(std::uint32_t classId, const mo::Dn& dn, std::uint32_t flags = 0)
      : classId_(classId), flags_(flags), dn_(dn) {}
  Config(std::uint32_t classId, const mo::Dn& dn, ValueMap values, std::uint32_t flags)
      : classId_(classId), flags_(flags), dn_(dn), values_(std::move(values)) {}

  std::uint32_t classId() const { return classId_; }
  std::uint32_t flags() const { return flags_; }
  const mo::Dn& dn() const { return dn_; }
  /// In ascending order of the properties.
  const ValueMap& values() const { return values_; }
  const std::vector<Config>& children() const { return children_; }

  /// `value` is a Value or the content of one.
  template <class T>
  void set(std::uint32_t propertyId, T&& value) {
    values_.set(propertyId, std::forward<T>(value));
  }
  /// The value, or null when the property is not set.
  const Value* find(std::uint32_t propertyId) const { return values_.find(propertyId); }
  /// Objects that travel along: what the object resolves and what stands below it. The reference
  /// is valid until the next call.
  Config& addChild(Config child);

  void serialize(base::OBioStream& stream) const;
  /// False, leaving the object empty, on an underrun, an unknown type tag, properties out of
  /// order, a count over the bound or a nesting deeper than eight. Allocates for what is there,
  /// never for what a count promises.
  bool deserialize(base::IBioStream& stream);

  bool operator==(const Config&) const = default;

 private:
  bool deserialize(base::IBioStream& stream, unsigned int depth);
  bool readValues(base::IBioStream& stream);
  bool readChildren(base::IBioStream& stream, unsigned int depth);

  std::uint32_t classId_ = 0;
  std::uint32_t flags_ = 0;
  mo::Dn dn_;
  ValueMap values_;
  std::vector<Config> children_;
};

/// An ordered list of configurations as one argument.
class ConfigSet {
 public:
  void append(Config config) { configs_.push_back(std::move(config)); }
  /// Makes room for so many configurations.
  void reserve(std::size_t configs) { configs_.reserve(configs); }
  const std::vector<Config>& configs() const { return configs_; }
  std::size_t size() const { return configs_.size(); }

  void serialize(base::OBioStream& stream) const;
  /// False, leaving the set empty, when the bytes do not decode.
  bool deserialize(base::IBioStream& stream);

  bool operator==(const ConfigSet&) const = default;

 private:
  std::vector<Config> configs_;
};

}  // namespace method
