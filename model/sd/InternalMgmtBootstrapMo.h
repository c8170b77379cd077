#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sd {

class IPMo;
class SystemMacMo;

/// An application instance's interface to the chassis' own management.
class InternalMgmtBootstrapMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x30d;
  static constexpr std::string_view kName = "internalMgmtBootstrap";

  // A virtual interface of the blade, "Adaptor:Index".
  static constexpr mo::Property<base::String> kBladeVnic{0x3150, "bladeVnic"};

  static constexpr auto kProperties = mo::describe(kBladeVnic);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit InternalMgmtBootstrapMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}

  /// Null when there is none.
  IPMo* resolveSdIP() const;
  SystemMacMo* resolveSdSystemMac() const;
};

}  // namespace sd
