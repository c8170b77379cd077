#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sd {

/// A logical device: the part of a blade that an application instance is given. Its links stand
/// below it.
class LduMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x308;
  static constexpr std::string_view kName = "ldu";

  static constexpr mo::Property<base::String> kLabel{0x3100, "name", mo::kDurable,
                                                     mo::kNamingGroup};

  static constexpr auto kProperties = mo::describe(kLabel);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit LduMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sd
