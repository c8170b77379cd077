#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sd {

/// One setting of the network that an application instance is told at its first start.
class NetMgmtBootstrapMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x30f;
  static constexpr std::string_view kName = "netMgmtBootstrap";

  static constexpr mo::Property<base::String> kKey{0x3170, "key", mo::kDurable, mo::kNamingGroup};
  static constexpr mo::Property<base::String> kValue{0x3171, "value"};

  static constexpr auto kProperties = mo::describe(kKey, kValue);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit NetMgmtBootstrapMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sd
