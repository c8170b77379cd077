#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sd {

/// An IPv6 address and its network.
class IPV6Mo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x311;
  static constexpr std::string_view kName = "ipv6";

  static constexpr mo::Property<base::String> kAddress{0x3190, "address"};
  static constexpr mo::Property<std::uint32_t> kPrefixLength{0x3191, "prefixLength"};
  static constexpr mo::Property<base::String> kGateway{0x3192, "gateway"};

  static constexpr auto kProperties = mo::describe(kAddress, kPrefixLength, kGateway);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit IPV6Mo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sd
