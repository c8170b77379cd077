#pragma once

#include <cstdint>
#include <string_view>

#include "framework/mo/Mo.h"

namespace sd {

/// A MAC address of the chassis' own.
class SystemMacMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x312;
  static constexpr std::string_view kName = "systemMac";

  // In the low 48 bits.
  static constexpr mo::Property<std::uint64_t> kMac{0x31a0, "mac"};

  static constexpr auto kProperties = mo::describe(kMac);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit SystemMacMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sd
