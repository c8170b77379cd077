#pragma once

#include <cstdint>
#include <type_traits>

#include "framework/method/Config.h"
#include "framework/mo/Dn.h"

namespace meta {

/// The numbers of meta::Type. Up to kText they are the tags of method::Value as well.
enum class TypeId : std::uint32_t {
  kNone = 0,
  kBool = 1,
  kU8 = 2,
  kI32 = 3,
  kU32 = 4,
  kU64 = 5,
  kFloat = 6,
  kText = 7,
  kName = 8,
  kConfig = 9,
  kConfigSet = 10,
};

/// The type of a C++ value; kNone for one that no property or argument can have.
template <class T>
constexpr TypeId typeIdOf() {
  if constexpr (std::is_same_v<T, bool>) {
    return TypeId::kBool;
  } else if constexpr (std::is_same_v<T, std::uint8_t>) {
    return TypeId::kU8;
  } else if constexpr (std::is_same_v<T, std::int32_t>) {
    return TypeId::kI32;
  } else if constexpr (std::is_same_v<T, std::uint32_t>) {
    return TypeId::kU32;
  } else if constexpr (std::is_same_v<T, std::uint64_t>) {
    return TypeId::kU64;
  } else if constexpr (std::is_same_v<T, float>) {
    return TypeId::kFloat;
  } else if constexpr (std::is_same_v<T, base::String>) {
    return TypeId::kText;
  } else if constexpr (std::is_same_v<T, mo::Dn>) {
    return TypeId::kName;
  } else if constexpr (std::is_same_v<T, method::Config>) {
    return TypeId::kConfig;
  } else if constexpr (std::is_same_v<T, method::ConfigSet>) {
    return TypeId::kConfigSet;
  } else {
    return TypeId::kNone;
  }
}

}  // namespace meta
