#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace meta {

/// A method class.
struct Method {
  std::uint32_t id;
  std::string_view name;
  std::uint32_t arguments;
  std::uint32_t results;

  /// As Table::load().
  static void initializeMethodMeta(const Method* table, std::size_t size);
  static const Method* find(std::uint32_t id);
  static std::span<const Method> all();
};

}  // namespace meta
