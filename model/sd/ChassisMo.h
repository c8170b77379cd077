#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sd {

/// A chassis.
class ChassisMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x301;
  static constexpr std::string_view kName = "chassis";

  static constexpr mo::Property<std::uint32_t> kId{0x3010, "id", mo::kDurable, mo::kNamingGroup};
  static constexpr mo::Property<base::String> kLabel{0x3011, "name"};
  static constexpr mo::Property<base::String> kModel{0x3012, "model"};
  static constexpr mo::Property<base::String> kSerial{0x3013, "serial"};
  static constexpr mo::Property<bool> kIsDescribed{
      0x3014, "isDescribed"};  // its slots are given, others are refused

  static constexpr auto kProperties = mo::describe(kId, kLabel, kModel, kSerial, kIsDescribed);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit ChassisMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sd
