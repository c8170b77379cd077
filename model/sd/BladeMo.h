#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sd {

/// The blade in a slot, as equipment.
class BladeMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x313;
  static constexpr std::string_view kName = "blade";

  static constexpr mo::Property<base::String> kSerial{0x31b0, "serial"};
  static constexpr mo::Property<base::String> kModel{0x31b1, "model"};

  static constexpr auto kProperties = mo::describe(kSerial, kModel);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit BladeMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sd
