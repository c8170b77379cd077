#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sd {

class IPMo;

/// What a link is for: the values of ExternalLduLinkMo's linkInterfaceType.
enum class LinkInterfaceType : std::uint8_t {
  kData = 0,
  kMgmt = 1,
  kCluster = 2,
  kDirect = 3  // a port that the application has for itself
};
inline constexpr mo::EnumText kLinkInterfaceTypeTexts[] = {
    {0, "data"}, {1, "mgmt"}, {2, "cluster"}, {3, "direct"}};
inline constexpr mo::Enumeration kLinkInterfaceTypes{kLinkInterfaceTypeTexts, ""};

/// What a management link carries: the values of ExternalLduLinkMo's mgmtSubType.
enum class MgmtSubType : std::uint8_t { kManagement = 1, kEvents = 2 };
inline constexpr mo::EnumText kMgmtSubTypeTexts[] = {{1, "management"}, {2, "events"}};
inline constexpr mo::Enumeration kMgmtSubTypes{kMgmtSubTypeTexts, ""};

/// A link from a logical device to a port of the chassis. A virtual interface of the blade is named
/// "Adaptor:Index".
class ExternalLduLinkMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x309;
  static constexpr std::string_view kName = "externalLduLink";

  static constexpr mo::Property<base::String> kPortName{0x3110, "portName", mo::kDurable,
                                                        mo::kNamingGroup};
  // A LinkInterfaceType.
  static constexpr mo::Property<std::uint8_t> kLinkInterfaceType{
      0x3111, "linkInterfaceType", mo::kDurable, mo::kStateGroup, &kLinkInterfaceTypes};
  // Of management links: a MgmtSubType.
  static constexpr mo::Property<std::uint8_t> kMgmtSubType{0x3112, "mgmtSubType", mo::kDurable,
                                                           mo::kStateGroup, &kMgmtSubTypes};
  static constexpr mo::Property<std::uint32_t> kVlan{0x3113, "vlan"};
  static constexpr mo::Property<base::String> kBladeVnic1{0x3114, "bladeVnic1"};
  static constexpr mo::Property<base::String> kBladeVnic2{0x3115, "bladeVnic2"};
  // In the low 48 bits.
  static constexpr mo::Property<std::uint64_t> kSystemMac{0x3116, "systemMac"};
  // A management link is told by its MAC address, not by its VLAN.
  static constexpr mo::Property<bool> kHasMac{0x3117, "hasMac"};

  static constexpr auto kProperties =
      mo::describe(kPortName, kLinkInterfaceType, kMgmtSubType, kVlan, kBladeVnic1, kBladeVnic2,
                   kSystemMac, kHasMac);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit ExternalLduLinkMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}

  LinkInterfaceType linkInterfaceType() const {
    return static_cast<LinkInterfaceType>(get(kLinkInterfaceType));
  }

  /// The link's address on the cluster's network, or null.
  IPMo* resolveSdIP() const;
};

}  // namespace sd
