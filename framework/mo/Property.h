#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "framework/method/Value.h"

// The description of managed objects' classes. A class and each of its properties is described
// once, beside the class; whatever goes by the description (tables of the model, columns of the
// database, names that people read) is made from that.

namespace mo {

/// Which use of an object a property is for. A set of groups is their sum.
inline constexpr std::uint32_t kNamingGroup = 1;  // tells objects below one parent apart
inline constexpr std::uint32_t kStateGroup = 2;   // what the object is
inline constexpr std::uint32_t kEngineGroup =
    4;  // what the engine notes about it; never sent to it
inline constexpr std::uint32_t kSecretGroup = 8;  // never shown to people
/// What a service tells the engine about an object.
inline constexpr std::uint32_t kReportGroups = kNamingGroup + kStateGroup;
inline constexpr std::uint32_t kAllGroups = 0xffffffff;

enum Durability : std::uint8_t {
  kDurable,  // kept in the engine's database
  kVolatile  // gone when the engine ends
};

/// The text of one value of an enumerated property.
struct EnumText {
  std::uint8_t value;
  std::string_view text;
};

/// What people and documents call the values of an enumerated property. Constant.
struct Enumeration {
  std::span<const EnumText> texts;
  std::string_view otherwise;  // of every other value, and of a property that is not set

  constexpr std::string_view textOf(std::uint8_t value) const {
    for (const EnumText& row : texts) {
      if (row.value == value) {
        return row.text;
      }
    }
    return otherwise;
  }
};

/// One property of a class, with the type of its value.
///
/// The id is unique among all classes and travels; the name is what people read and what the
/// database keeps. Neither is ever used again for something else.
template <class T>
struct Property {
  using Type = T;
  static constexpr method::ValueKind kKind = method::kindOf<T>();

  std::uint32_t id;
  std::string_view name;
  Durability durability = kDurable;
  std::uint32_t group = kStateGroup;
  const Enumeration* enumeration = nullptr;  // of a std::uint8_t whose values have texts
};

/// A property without its type: a row of its class's description.
struct PropertyInfo {
  std::uint32_t id;
  std::string_view name;
  method::ValueKind kind;
  Durability durability;
  std::uint32_t group;
  const Enumeration* enumeration = nullptr;  // null when its values have no texts

  constexpr bool isDurable() const { return durability == kDurable; }
};

/// The rows of a class's properties, in the order in which they are given.
template <class... T>
constexpr std::array<PropertyInfo, sizeof...(T)> describe(const Property<T>&... property) {
  return {PropertyInfo{property.id, property.name, Property<T>::kKind, property.durability,
                       property.group, property.enumeration}...};
}

/// A class of managed objects. Constant; its rows live as long as the process.
struct ClassInfo {
  std::uint32_t id;
  std::string_view name;  // what people read and what the database keeps
  std::span<const PropertyInfo> properties;

  /// The property's place among the class's, from 0; properties.size() when it has none such.
  constexpr std::size_t positionOf(std::uint32_t propertyId) const {
    std::size_t position = 0;
    while (position < properties.size() && properties[position].id != propertyId) {
      ++position;
    }
    return position;
  }
  /// Null when the class has no such property.
  constexpr const PropertyInfo* find(std::uint32_t propertyId) const {
    const std::size_t position = positionOf(propertyId);
    return position == properties.size() ? nullptr : &properties[position];
  }
  constexpr const PropertyInfo* find(std::string_view property) const {
    for (const PropertyInfo& row : properties) {
      if (row.name == property) {
        return &row;
      }
    }
    return nullptr;
  }
};

}  // namespace mo
