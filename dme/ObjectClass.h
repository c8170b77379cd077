#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "framework/base/String.h"
#include "framework/method/Config.h"

// Every class of managed object that the engine keeps, described once: loading, storing and
// reading all go by these tables. A property's id is its place in the table, from 1; its name is
// what the database keeps, so neither is ever used again for something else.

namespace dme {

/// The alternative of method::Value that a property holds.
enum class ValueKind : std::uint8_t {
  kBool = 1,
  kUint8 = 2,
  kInt32 = 3,
  kUint32 = 4,
  kUint64 = 5,
  kFloat = 6,
  kText = 7
};

struct PropertyInfo {
  std::uint32_t id;
  std::string_view name;
  ValueKind kind;
  bool isDurable;
};

struct ClassInfo {
  std::string_view name;
  std::span<const PropertyInfo> properties;

  /// Null when there is none of this name.
  const PropertyInfo* find(std::string_view property) const;
};

/// Null when there is no class of this name.
const ClassInfo* findClass(std::string_view name);

/// Names one property together with the type of its value.
template <class T>
struct Property {
  std::uint32_t id;
};

/// The root of the tree.
namespace system_object {
inline constexpr Property<std::uint64_t> kClusterId{1};
inline constexpr Property<std::uint64_t> kEpoch{2};  // how often the engine has started
extern const ClassInfo kClass;
}  // namespace system_object

namespace chassis_object {
inline constexpr Property<std::uint32_t> kId{1};
inline constexpr Property<base::String> kName{2};
inline constexpr Property<base::String> kModel{3};
inline constexpr Property<base::String> kSerial{4};
inline constexpr Property<bool> kIsDescribed{5};  // its slots are given, others are refused
extern const ClassInfo kClass;
}  // namespace chassis_object

/// How far the blade in a slot has come.
enum class Admission : std::uint8_t {
  kNone = 0,         // no blade has registered yet
  kTokenIssued = 1,  // the slot's token was made and the blade was asked to come again
  kValid = 2,
  kForeign = 3  // the blade showed another token and must be formatted
};

namespace slot_object {
inline constexpr Property<std::uint32_t> kNumber{1};
inline constexpr Property<base::String> kName{2};
inline constexpr Property<base::String> kToken{3};
inline constexpr Property<std::uint8_t> kAdmission{4};
inline constexpr Property<base::String> kRunningVersion{5};
inline constexpr Property<base::String> kRunningImage{6};
inline constexpr Property<std::uint32_t> kRunningImageSize{7};  // bytes
inline constexpr Property<base::String> kCachedVersion{8};
inline constexpr Property<base::String> kCachedImage{9};
inline constexpr Property<std::uint32_t> kCachedImageSize{10};  // bytes
inline constexpr Property<base::String> kStartupVersion{11};
inline constexpr Property<base::String> kVendor{12};
inline constexpr Property<std::uint32_t> kRegistrations{13};  // since the engine started
extern const ClassInfo kClass;
}  // namespace slot_object

}  // namespace dme
