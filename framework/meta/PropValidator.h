#pragma once

#include <cstddef>
#include <cstdint>

#include "framework/method/Config.h"

namespace meta {

/// The range that the values of a numeric property lie in, both ends included.
struct PropValidator {
  std::uint32_t propertyId;
  double least;
  double most;

  /// As Table::load().
  static void initializePropValMeta(const PropValidator* table, std::size_t size);
  /// True for a value within the property's range, for one that is no number, and for a property
  /// without a validator. A floating-point number that is not a number lies in no range.
  static bool isValid(std::uint32_t propertyId, const method::Value& value);
};

}  // namespace meta
