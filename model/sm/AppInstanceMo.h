#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"

namespace sm {

/// The values of AppInstanceMo's state.
inline constexpr std::uint8_t kAppInactive = 3;   // disabled or stopped
inline constexpr std::uint8_t kAppActive = 7;     // enabled or running
inline constexpr std::uint8_t kAppUnknown = 255;  // the blade's word is none of these
inline constexpr mo::EnumText kAppStateTexts[] = {{kAppInactive, "stopped"},
                                                  {kAppActive, "started"}};
inline constexpr mo::Enumeration kAppStates{kAppStateTexts, "unknown"};

/// An application instance on a blade, as the blade reports it. Times are in milliseconds since the
/// epoch, UTC.
class AppInstanceMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x28f;
  static constexpr std::string_view kName = "reportedAppInstance";

  static constexpr mo::Property<base::String> kAppInstanceId{0x87e, "appInstanceId", mo::kDurable,
                                                             mo::kNamingGroup};
  // Written by both the administrative and the operational state: the later one stands.
  static constexpr mo::Property<std::uint8_t> kState{0x883, "state", mo::kDurable, mo::kStateGroup,
                                                     &kAppStates};
  static constexpr mo::Property<bool> kExternalSoftwareManagement{0x88d,
                                                                  "externalSoftwareManagement"};
  static constexpr mo::Property<base::String> kInstalledVersion{0x880, "installedVersion"};
  static constexpr mo::Property<base::String> kHotfixes{0x88c, "hotfixes"};
  static constexpr mo::Property<std::uint64_t> kObservedAt{0x30c0, "observedAt", mo::kDurable,
                                                           mo::kEngineGroup};
  static constexpr mo::Property<bool> kIsFailed{0x30c1, "isFailed", mo::kDurable, mo::kEngineGroup};
  static constexpr mo::Property<std::uint32_t> kFailures{0x30c2, "failures", mo::kDurable,
                                                         mo::kEngineGroup};
  static constexpr mo::Property<std::uint64_t> kFailedAt{0x30c3, "failedAt", mo::kDurable,
                                                         mo::kEngineGroup};

  static constexpr auto kProperties =
      mo::describe(kAppInstanceId, kState, kExternalSoftwareManagement, kInstalledVersion,
                   kHotfixes, kObservedAt, kIsFailed, kFailures, kFailedAt);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit AppInstanceMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}
};

}  // namespace sm
