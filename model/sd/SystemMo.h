#pragma once

#include <cstdint>
#include <string_view>

#include "framework/mo/Mo.h"

namespace sd {

/// The root of the engine's tree.
class SystemMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x300;
  static constexpr std::string_view kName = "system";

  static constexpr mo::Property<std::uint64_t> kClusterId{0x3000, "clusterId"};
  static constexpr mo::Property<std::uint64_t> kEpoch{0x3001,
                                                      "epoch"};  // how often the engine has started

  static constexpr auto kProperties = mo::describe(kClusterId, kEpoch);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit SystemMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sd
