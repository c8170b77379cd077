#pragma once

#include <cstdint>
#include <string_view>

#include "framework/mo/Mo.h"

namespace sd {

class IPMo;
class IPV6Mo;

/// An application instance's management addresses: those that it resolves.
class MgmtBootstrapMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x30e;
  static constexpr std::string_view kName = "mgmtBootstrap";

  static constexpr auto kProperties = mo::describe();
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit MgmtBootstrapMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}

  /// Null when there is none.
  IPMo* resolveSdIP() const;
  IPV6Mo* resolveSdIPV6() const;
};

}  // namespace sd
