#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sd {

/// The addresses by which a cluster of application instances is managed. An IPv4 address's first
/// number is the most significant byte; 0 and "::" are no address.
class ClusterBootstrapMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x30c;
  static constexpr std::string_view kName = "clusterBootstrap";

  static constexpr mo::Property<std::uint32_t> kIPv4PoolStart{0x3140, "ipv4PoolStart"};
  static constexpr mo::Property<std::uint32_t> kIPv4PoolEnd{0x3141, "ipv4PoolEnd"};
  static constexpr mo::Property<std::uint32_t> kIPv4VirtIP{0x3142, "ipv4VirtIP"};
  static constexpr mo::Property<std::uint32_t> kIPv4Netmask{0x3143, "ipv4Netmask"};
  static constexpr mo::Property<std::uint32_t> kIPv4Gateway{0x3144, "ipv4Gateway"};
  static constexpr mo::Property<base::String> kIPv6PoolStart{0x3145, "ipv6PoolStart"};
  static constexpr mo::Property<base::String> kIPv6PoolEnd{0x3146, "ipv6PoolEnd"};
  static constexpr mo::Property<base::String> kIPv6VirtIP{0x3147, "ipv6VirtIP"};
  static constexpr mo::Property<std::uint32_t> kIPv6PrefixLength{0x3148, "ipv6PrefixLength"};
  static constexpr mo::Property<base::String> kIPv6Gateway{0x3149, "ipv6Gateway"};

  static constexpr auto kProperties =
      mo::describe(kIPv4PoolStart, kIPv4PoolEnd, kIPv4VirtIP, kIPv4Netmask, kIPv4Gateway,
                   kIPv6PoolStart, kIPv6PoolEnd, kIPv6VirtIP, kIPv6PrefixLength, kIPv6Gateway);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit ClusterBootstrapMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sd
