#pragma once

#include <cstdint>
#include <string_view>

#include "framework/mo/Mo.h"

namespace sd {

/// An IPv4 address and its network. An address's first number is the most significant byte.
class IPMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x310;
  static constexpr std::string_view kName = "ip";

  static constexpr mo::Property<std::uint32_t> kAddress{0x3180, "address"};
  static constexpr mo::Property<std::uint32_t> kNetmask{0x3181, "netmask"};
  static constexpr mo::Property<std::uint32_t> kGateway{0x3182, "gateway"};

  static constexpr auto kProperties = mo::describe(kAddress, kNetmask, kGateway);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit IPMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sd
