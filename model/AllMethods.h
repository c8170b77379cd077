#pragma once

#include "model/agboot/Methods.h"
#include "model/dmeapi/Methods.h"
#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "model/sysdebug/Methods.h"
#include "model/zan_dme/Methods.h"

namespace model {

/// A list of method classes, to do something with each of them at compile time.
template <class... Me>
struct MethodList {
  static constexpr unsigned kSize = sizeof...(Me);

  /// Calls `action.template operator()<Me>()` for each.
  template <class Action>
  static void forEach(Action&& action) {
    (action.template operator()<Me>(), ...);
  }
};

/// Every method between the gateway and the engine.
using AllMethods =
    MethodList<sysdebug::ApplyLogControlMe, sysdebug::RefreshLogControlMe, agboot::BootstrapMe,
               agboot::BootstrapDoneMe, dmeapi::ClusterStateMe, dmeapi::ClusterStateRequestMe,
               zan_dme::FsmSdAppInstanceInstallApplicationSendCommandMe,
               zan_dme::FsmSdAppInstanceStartApplicationSendCommandMe,
               zan_dme::FsmSdAppInstanceStopApplicationSendCommandMe,
               zan_dme::FsmSdAppInstanceUninstallApplicationSendCommandMe,
               zan_dme::FsmSdAppInstanceUpgradeApplicationSendCommandMe,
               zan_dme::FsmSdSlotChangePlatformLogLevelSendCommandMe,
               zan_dme::FsmSdSlotFormatDiskStartDiskFormatMe,
               serverapi::OsControllerUpgradeProgressMe, serverapi::OsControllerVersionMe,
               serviceorchapi::ClearApplicationLogDataMe, serviceorchapi::ClearSystemLogDataMe,
               serviceorchapi::DeRegisterBladeMe, serviceorchapi::GcovRequestMe,
               serviceorchapi::NotifyAppFailureMe, serviceorchapi::UpdateDiskFormatStatusMe,
               serviceorchapi::UpdatePlatformInfoMe, serviceorchapi::UpdateProgressMe,
               serviceorchapi::UpdateSmaHeartbeatMe, serviceorchapi::UpdateTimeZoneMe,
               serviceorchapi::ValidateAppInstancesMe, serviceorchapi::ValidateBladeStateMe>;

}  // namespace model
