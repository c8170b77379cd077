#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace meta {

/// A service of the system.
struct Svc {
  std::uint32_t id;
  std::string_view name;
  std::uint32_t domainId;

  /// As Table::load().
  static void initializeSvcMeta(const Svc* table, std::size_t size);
  static const Svc* find(std::uint32_t id);
};

}  // namespace meta
