#include "serviceOrchAG/svc/Registration.h"

#include <type_traits>

#include "framework/sysdebug/LogControlEpBI.h"
#include "model/agboot/Methods.h"
#include "model/dmeapi/Methods.h"
#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "model/sysdebug/Methods.h"
#include "model/zan_dme/Methods.h"
#include "serviceOrchAG/svc/Svc.h"

namespace zan_serviceOrchAG {
namespace {

/// Compares types, not pointers: with UBSan a comparison of pointers is no constant expression.
template <class Callback, Callback callback>
constexpr bool kIsSet = !std::is_same_v<std::integral_constant<Callback, callback>,
                                        std::integral_constant<Callback, nullptr>>;

template <class Me, typename Me::ExecuteCb execute, typename Me::SuccessRspCb success,
          typename Me::FailedRspCb failure, typename Me::FormatRspCb formatSuccess,
          typename Me::FormatRspCb formatFailure>
constexpr Registration row() {
  return {Me::kName,
          Me::kClassId,
          kIsSet<typename Me::ExecuteCb, execute>,
          kIsSet<typename Me::SuccessRspCb, success>,
          kIsSet<typename Me::FailedRspCb, failure>,
          kIsSet<typename Me::FormatRspCb, formatSuccess>,
          kIsSet<typename Me::FormatRspCb, formatFailure>,
          [] {
            Me::registerCbs(execute, success, failure, formatSuccess, formatFailure);
          }};
}

/// A method that the management engine calls here.
template <class Me, typename Me::ExecuteCb execute, typename Me::FormatRspCb formatSuccess,
          typename Me::FormatRspCb formatFailure>
constexpr Registration executes() {
  return row<Me, execute, nullptr, nullptr, formatSuccess, formatFailure>();
}

/// A method that this service calls there.
template <class Me, typename Me::SuccessRspCb success, typename Me::FailedRspCb failure>
constexpr Registration invokes() {
  return row<Me, nullptr, success, failure, nullptr, nullptr>();
}

using sysdebug::LogControlEpBI;

constexpr Registration kRegistrations[] = {
    row<sysdebug::ApplyLogControlMe, LogControlEpBI::processApply, nullptr, nullptr, nullptr,
        nullptr>(),
    row<sysdebug::RefreshLogControlMe, LogControlEpBI::processRefresh,
        LogControlEpBI::processRefreshResponse, nullptr, nullptr, nullptr>(),
    invokes<agboot::BootstrapMe, Svc::successRspAgbootBootstrapCb,
            Svc::failedRspAgbootBootstrapCb>(),
    invokes<agboot::BootstrapDoneMe, Svc::successRspAgbootBootstrapDoneCb,
            Svc::failedRspAgbootBootstrapDoneCb>(),
    executes<dmeapi::ClusterStateMe, Svc::executeDmeapiClusterStateCb,
             Svc::formatSuccessRspDmeapiClusterStateCb, Svc::formatFailedRspDmeapiClusterStateCb>(),
    invokes<dmeapi::ClusterStateRequestMe, Svc::successRspDmeapiClusterStateRequestCb,
            Svc::failedRspDmeapiClusterStateRequestCb>(),
    executes<zan_dme::FsmSdAppInstanceInstallApplicationSendCommandMe,
             Svc::executeZanDmeFsmSdAppInstanceInstallApplicationSendCommandCb,
             Svc::formatSuccessRspZanDmeFsmSdAppInstanceInstallApplicationSendCommandCb,
             Svc::formatFailedRspZanDmeFsmSdAppInstanceInstallApplicationSendCommandCb>(),
    executes<zan_dme::FsmSdAppInstanceStartApplicationSendCommandMe,
             Svc::executeZanDmeFsmSdAppInstanceStartApplicationSendCommandCb,
             Svc::formatSuccessRspZanDmeFsmSdAppInstanceStartApplicationSendCommandCb,
             Svc::formatFailedRspZanDmeFsmSdAppInstanceStartApplicationSendCommandCb>(),
    executes<zan_dme::FsmSdAppInstanceStopApplicationSendCommandMe,
             Svc::executeZanDmeFsmSdAppInstanceStopApplicationSendCommandCb,
             Svc::formatSuccessRspZanDmeFsmSdAppInstanceStopApplicationSendCommandCb,
             Svc::formatFailedRspZanDmeFsmSdAppInstanceStopApplicationSendCommandCb>(),
    executes<zan_dme::FsmSdAppInstanceUninstallApplicationSendCommandMe,
             Svc::executeZanDmeFsmSdAppInstanceUninstallApplicationSendCommandCb,
             Svc::formatSuccessRspZanDmeFsmSdAppInstanceUninstallApplicationSendCommandCb,
             Svc::formatFailedRspZanDmeFsmSdAppInstanceUninstallApplicationSendCommandCb>(),
    executes<zan_dme::FsmSdAppInstanceUpgradeApplicationSendCommandMe,
             Svc::executeZanDmeFsmSdAppInstanceUpgradeApplicationSendCommandCb,
             Svc::formatSuccessRspZanDmeFsmSdAppInstanceUpgradeApplicationSendCommandCb,
             Svc::formatFailedRspZanDmeFsmSdAppInstanceUpgradeApplicationSendCommandCb>(),
    executes<zan_dme::FsmSdSlotChangePlatformLogLevelSendCommandMe,
             Svc::executeZanDmeFsmSdSlotChangePlatformLogLevelSendCommandCb,
             Svc::formatSuccessRspZanDmeFsmSdSlotChangePlatformLogLevelSendCommandCb,
             Svc::formatFailedRspZanDmeFsmSdSlotChangePlatformLogLevelSendCommandCb>(),
    executes<zan_dme::FsmSdSlotFormatDiskStartDiskFormatMe,
             Svc::executeZanDmeFsmSdSlotFormatDiskStartDiskFormatCb,
             Svc::formatSuccessRspZanDmeFsmSdSlotFormatDiskStartDiskFormatCb,
             Svc::formatFailedRspZanDmeFsmSdSlotFormatDiskStartDiskFormatCb>(),
    invokes<serverapi::OsControllerUpgradeProgressMe,
            Svc::successRspServerapiOsControllerUpgradeProgressCb,
            Svc::failedRspServerapiOsControllerUpgradeProgressCb>(),
    invokes<serverapi::OsControllerVersionMe, Svc::successRspServerapiOsControllerVersionCb,
            Svc::failedRspServerapiOsControllerVersionCb>(),
    executes<serviceorchapi::ClearApplicationLogDataMe,
             Svc::executeServiceorchapiClearApplicationLogDataCb,
             Svc::formatSuccessRspServiceorchapiClearApplicationLogDataCb,
             Svc::formatFailedRspServiceorchapiClearApplicationLogDataCb>(),
    executes<serviceorchapi::ClearSystemLogDataMe, Svc::executeServiceorchapiClearSystemLogDataCb,
             Svc::formatSuccessRspServiceorchapiClearSystemLogDataCb,
             Svc::formatFailedRspServiceorchapiClearSystemLogDataCb>(),
    executes<serviceorchapi::DeRegisterBladeMe, Svc::executeServiceorchapiDeRegisterBladeCb,
             Svc::formatSuccessRspServiceorchapiDeRegisterBladeCb,
             Svc::formatFailedRspServiceorchapiDeRegisterBladeCb>(),
    executes<serviceorchapi::GcovRequestMe, Svc::executeServiceorchapiGcovRequestCb,
             Svc::formatSuccessRspServiceorchapiGcovRequestCb,
             Svc::formatFailedRspServiceorchapiGcovRequestCb>(),
    invokes<serviceorchapi::NotifyAppFailureMe, Svc::successRspServiceorchapiNotifyAppFailureCb,
            Svc::failedRspServiceorchapiNotifyAppFailureCb>(),
    invokes<serviceorchapi::UpdateDiskFormatStatusMe,
            Svc::successRspServiceorchapiUpdateDiskFormatStatusCb,
            Svc::failedRspServiceorchapiUpdateDiskFormatStatusCb>(),
    invokes<serviceorchapi::UpdatePlatformInfoMe, Svc::successRspServiceorchapiUpdatePlatformInfoCb,
            Svc::failedRspServiceorchapiUpdatePlatformInfoCb>(),
    invokes<serviceorchapi::UpdateProgressMe, Svc::successRspServiceorchapiUpdateProgressCb,
            Svc::failedRspServiceorchapiUpdateProgressCb>(),
    invokes<serviceorchapi::UpdateSmaHeartbeatMe, Svc::successRspServiceorchapiUpdateSmaHeartbeatCb,
            Svc::failedRspServiceorchapiUpdateSmaHeartbeatCb>(),
    executes<serviceorchapi::UpdateTimeZoneMe, Svc::executeServiceorchapiUpdateTimeZoneCb,
             Svc::formatSuccessRspServiceorchapiUpdateTimeZoneCb,
             Svc::formatFailedRspServiceorchapiUpdateTimeZoneCb>(),
    invokes<serviceorchapi::ValidateAppInstancesMe,
            Svc::successRspServiceorchapiValidateAppInstancesCb,
            Svc::failedRspServiceorchapiValidateAppInstancesCb>(),
    invokes<serviceorchapi::ValidateBladeStateMe, Svc::successRspServiceorchapiValidateBladeStateCb,
            Svc::failedRspServiceorchapiValidateBladeStateCb>(),
};

}  // namespace

std::span<const Registration> registrations() {
  return kRegistrations;
}

void registerCallbacks() {
  for (const Registration& registration : kRegistrations) {
    registration.install();
  }
}

}  // namespace zan_serviceOrchAG
