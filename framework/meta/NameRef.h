#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace meta {

/// Which property tells the objects of a class apart below one parent.
struct NameRef {
  std::uint32_t id;
  std::uint32_t classId;
  std::uint32_t propertyId;

  /// As Table::load().
  static void initializeNameRefMeta(const NameRef* table, std::size_t size);
  /// Prepares findByProperty(). Needs the table. Throws std::invalid_argument when two references
  /// name one property.
  static void indexByProperty();
  static const NameRef* find(std::uint32_t id);
  static const NameRef* findByProperty(std::uint32_t propertyId);
};

}  // namespace meta
