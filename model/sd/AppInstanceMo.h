#pragma once

#include <cstdint>
#include <string_view>

#include "framework/base/String.h"
#include "framework/mo/Mo.h"
#include "model/sm/AppInstanceMo.h"

namespace sd {

class ClusterBootstrapMo;
class InternalMgmtBootstrapMo;
class LduMo;
class MgmtBootstrapMo;
class ResourceMo;

/// What is being done to an application instance: the values of AppInstanceMo's jobType.
enum class JobType : std::uint8_t {
  kNone = 0,
  kInstall = 1,
  kUninstall = 2,
  kUpgrade = 3,
  kStart = 4,
  kStop = 5
};

/// An application instance that the engine believes to be on a blade, and what it wants of it.
/// failedAt is in milliseconds since the epoch, UTC.
class AppInstanceMo final : public mo::Mo {
 public:
  static constexpr std::uint32_t kClassId = 0x303;
  static constexpr std::string_view kName = "appInstance";

  static constexpr mo::Property<base::String> kAppInstanceId{0x3040, "appInstanceId", mo::kDurable,
                                                             mo::kNamingGroup};
  static constexpr mo::Property<base::String> kExpectedVersion{0x3041, "expectedVersion"};
  // As sm::AppInstanceMo's state.
  static constexpr mo::Property<std::uint8_t> kExpectedState{0x3042, "expectedState", mo::kDurable,
                                                             mo::kStateGroup, &sm::kAppStates};
  static constexpr mo::Property<bool> kIsFailed{0x3043, "isFailed"};
  static constexpr mo::Property<std::uint32_t> kFailures{0x3044, "failures"};
  static constexpr mo::Property<std::uint64_t> kFailedAt{0x3045, "failedAt"};

  static constexpr mo::Property<std::uint32_t> kSlotId{0x3046, "slotId"};
  // A JobType.
  static constexpr mo::Property<std::uint8_t> kJobType{0x3047, "jobType"};
  static constexpr mo::Property<base::String> kMgmtBootstrapVersion{0x3048, "mgmtBootstrapVersion"};
  // How far it has come: "absent", "unsure", "stopped" or "started"; not set, it is taken to be
  // there.
  static constexpr mo::Property<base::String> kPhase{0x3049, "phase", mo::kDurable,
                                                     mo::kEngineGroup};

  static constexpr auto kProperties =
      mo::describe(kAppInstanceId, kExpectedVersion, kExpectedState, kIsFailed, kFailures,
                   kFailedAt, kSlotId, kJobType, kMgmtBootstrapVersion, kPhase);
  static constexpr mo::ClassInfo kClass{kClassId, kName, kProperties};

  explicit AppInstanceMo(const mo::Dn& dn = {}) : Mo(kClass, dn) {}

  JobType jobType() const { return static_cast<JobType>(get(kJobType)); }

  /// What the instance is given and told when it starts. Each is null when it has none.
  LduMo* resolveSdLdu() const;
  ResourceMo* resolveSdResource() const;
  ClusterBootstrapMo* resolveSdClusterBootstrap() const;
  InternalMgmtBootstrapMo* resolveSdInternalMgmtBootstrap() const;
  MgmtBootstrapMo* resolveSdMgmtBootstrap() const;
};

}  // namespace sd
