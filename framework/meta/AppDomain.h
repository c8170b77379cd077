#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace meta {

/// A group of services that are delivered together.
struct AppDomain {
  std::uint32_t id;
  std::string_view name;

  /// As Table::load().
  static void initializeDomainMeta(const AppDomain* table, std::size_t size);
  static const AppDomain* find(std::uint32_t id);
};

}  // namespace meta
