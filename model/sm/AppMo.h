#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sm {

/// How an application is run: the values of AppMo's deployType.
enum class DeployType : std::uint8_t { kNative = 1, kLxc = 2, kVm = 3 };
inline constexpr mo::EnumText kDeployTypeTexts[] = {{1, "native"}, {2, "lxc"}, {3, "vm"}};
inline constexpr mo::Enumeration kDeployTypes{kDeployTypeTexts, "unknown"};

/// An application: the package that instances are made of. It stands below its instance. Time-outs
/// are in seconds, the data disk in gigabytes.
class AppMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x306;
  static constexpr std::string_view kName = "app";

  // Where the blade fetches the package.
  static constexpr mo::Property<base::String> kPackageFile{0x30e0, "packageFile"};
  static constexpr mo::Property<std::uint64_t> kReqDataHdd{0x30e1, "reqDataHdd"};
  static constexpr mo::Property<std::uint8_t> kDeployType{0x30e2, "deployType", mo::kDurable,
                                                          mo::kStateGroup, &kDeployTypes};
  static constexpr mo::Property<std::uint64_t> kInstallTimeout{0x30e3, "installTimeout"};
  static constexpr mo::Property<std::uint64_t> kUninstallTimeout{0x30e4, "uninstallTimeout"};
  static constexpr mo::Property<std::uint64_t> kUpgradeTimeout{0x30e5, "upgradeTimeout"};
  // The application has cluster links and an internal management interface.
  static constexpr mo::Property<bool> kVdp{0x30e6, "vdp"};

  static constexpr auto kProperties =
      mo::describe(kPackageFile, kReqDataHdd, kDeployType, kInstallTimeout, kUninstallTimeout,
                   kUpgradeTimeout, kVdp);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit AppMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sm
