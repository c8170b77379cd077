#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sd {

/// A link between two applications of a logical device.
class AppLduLinkMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x30a;
  static constexpr std::string_view kName = "appLduLink";

  static constexpr mo::Property<base::String> kLabel{0x3120, "name", mo::kDurable,
                                                     mo::kNamingGroup};
  // Virtual interfaces of the blade, "Adaptor:Index".
  static constexpr mo::Property<base::String> kBladeVnic1{0x3121, "bladeVnic1"};
  static constexpr mo::Property<base::String> kBladeVnic2{0x3122, "bladeVnic2"};

  static constexpr auto kProperties = mo::describe(kLabel, kBladeVnic1, kBladeVnic2);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit AppLduLinkMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sd
