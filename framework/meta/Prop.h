#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace meta {

/// A property of a class of managed objects. Its number is unique among all classes.
struct Prop {
  std::uint32_t id;
  std::uint32_t classId;
  std::string_view name;
  std::uint32_t typeId;

  /// As Table::load().
  static void initializePropMeta(const Prop* table, std::size_t size);
  static const Prop* find(std::uint32_t id);
  static std::span<const Prop> all();
};

}  // namespace meta
