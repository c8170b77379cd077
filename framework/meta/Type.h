#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace meta {

/// A kind of value that a property or an argument can hold.
struct Type {
  std::uint32_t id;
  std::string_view name;

  /// As Table::load().
  static void initializeTypeMeta(const Type* table, std::size_t size);
  static const Type* find(std::uint32_t id);
  static std::span<const Type> all();
};

}  // namespace meta
