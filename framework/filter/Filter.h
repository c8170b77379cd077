#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "framework/method/Config.h"
#include "framework/mo/Mo.h"

namespace filter {

/// Picks managed objects by one of their properties. Constant and thread-safe.
class Filter {
 public:
  /// Enters the kinds of filters that create() knows: "eq" and "ne" compare with a value, "set"
  /// asks whether the property is set. To be called at start-up; again has no effect.
  static void initFactories();
  /// Null for an unknown kind, and for every kind before initFactories().
  static std::unique_ptr<Filter> create(std::string_view kind, std::uint32_t propertyId,
                                        const method::Value& value);

  virtual ~Filter() = default;
  virtual bool matches(const mo::Mo& object) const = 0;
};

}  // namespace filter
