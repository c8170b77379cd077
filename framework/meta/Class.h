#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace meta {

/// A class of managed objects.
struct Class {
  std::uint32_t id;
  std::string_view name;

  /// As Table::load().
  static void initializeClassMeta(const Class* table, std::size_t size);
  static const Class* find(std::uint32_t id);
  static std::span<const Class> all();
};

}  // namespace meta
