#pragma once

#include <cstdint>
#include <type_traits>
#include <utility>
#include <variant>

#include "framework/base/String.h"

namespace method {

/// A property's value; the alternative's index is the type tag on the wire.
using Value = std::variant<std::monostate, bool, std::uint8_t, std::int32_t, std::uint32_t,
                           std::uint64_t, float, base::String>;

/// The alternatives of Value, by their tags.
enum class ValueKind : std::uint8_t {
  kNone = 0,
  kBool = 1,
  kUint8 = 2,
  kInt32 = 3,
  kUint32 = 4,
  kUint64 = 5,
  kFloat = 6,
  kText = 7
};

inline ValueKind kindOf(const Value& value) {
  return static_cast<ValueKind>(value.index());
}

namespace detail {

template <class T, std::size_t... kTags>
constexpr std::size_t tagOf(std::index_sequence<kTags...>) {
  static_assert((std::is_same_v<T, std::variant_alternative_t<kTags, Value>> || ...),
                "a type that is no alternative of Value");
  return ((std::is_same_v<T, std::variant_alternative_t<kTags, Value>> ? kTags : 0) + ...);
}

}  // namespace detail

/// The kind of the values of type T, which is one of Value's alternatives.
template <class T>
constexpr ValueKind kindOf() {
  return static_cast<ValueKind>(
      detail::tagOf<T>(std::make_index_sequence<std::variant_size_v<Value>>()));
}

}  // namespace method
