#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace meta {

/// A code with which a method fails, and what it stands for.
struct Result {
  std::uint32_t id;
  std::string_view name;

  /// As Table::load().
  static void init(const Result* table, std::size_t size);
  static const Result* find(std::uint32_t id);
};

}  // namespace meta
