#pragma once

#include <memory>

#include "framework/base/Buffer.h"
#include "framework/base/String.h"
#include "framework/proc/Stimulus.h"
#include "framework/proc/Svc.h"

namespace dmemem {
class Mit;
}
namespace meta {
class Autoconfig;
}
namespace method {
class Config;
class ConfigSet;
}  // namespace method
namespace mo {
class Dn;
class Transactor;
}  // namespace mo
namespace net {
class ChannelBank;
}
namespace proc {
class App;
class Doer;
class QueueDeduplicatorImpl;
}  // namespace proc

namespace agboot {
class BootstrapDoneMe;
class BootstrapMe;
}  // namespace agboot
namespace dmeapi {
class ClusterStateMe;
class ClusterStateRequestMe;
}  // namespace dmeapi
namespace serverapi {
class OsControllerUpgradeProgressMe;
class OsControllerVersionMe;
}  // namespace serverapi
namespace serviceorchapi {
class ClearApplicationLogDataMe;
class ClearSystemLogDataMe;
class DeRegisterBladeMe;
class GcovRequestMe;
class NotifyAppFailureMe;
class UpdateDiskFormatStatusMe;
class UpdatePlatformInfoMe;
class UpdateProgressMe;
class UpdateSmaHeartbeatMe;
class UpdateTimeZoneMe;
class ValidateAppInstancesMe;
class ValidateBladeStateMe;
}  // namespace serviceorchapi
namespace zan_dme {
class FsmSdAppInstanceInstallApplicationSendCommandMe;
class FsmSdAppInstanceStartApplicationSendCommandMe;
class FsmSdAppInstanceStopApplicationSendCommandMe;
class FsmSdAppInstanceUninstallApplicationSendCommandMe;
class FsmSdAppInstanceUpgradeApplicationSendCommandMe;
class FsmSdSlotChangePlatformLogLevelSendCommandMe;
class FsmSdSlotFormatDiskStartDiskFormatMe;
}  // namespace zan_dme

namespace zan_serviceOrchAG {

/// The gateway's service object, and the class on which everything is declared that the management
/// engine calls here or that is called there.
///
/// All callbacks are static: they run on the service's queue and pool, several at once, and keep
/// no state here. Created by init() and never destroyed before the process ends.
class Svc : public proc::Svc {
 public:
  static constexpr std::uint32_t kServiceId = 26;

  Svc();
  ~Svc() override;

  // ----- Life cycle -----------------------------------------------------------------------------

  /// Start-up entry, with the process's arguments. Returns when blade requests are being served. A
  /// further call, from any thread, waits for the first and does nothing. An exception of the
  /// framework passes through.
  static void init(int argc, char** argv);

  static void preInitCb();
  /// Starts the time-zone timer and the request server.
  static void initCb();
  static void dataInitCb();
  static void postInitCb();
  /// Asks the management engine for this service's state.
  static void wkrInitCb();
  /// Blocks, without limit, until the channels to the management engine are up.
  static void mainCb();
  static void preShutdownCb();
  static void shutdownCb();
  static void postShutdownCb();

  void procBeginCb() override;
  void procEndCb() override;
  void optionalPause() override;
  /// Opens the channels to the management engine and asks it for the bootstrap.
  void initSvcCb() override;
  void invokeCallHome() override;
  void sendSyslogMessage() override;
  void invokeSendSnmpNotification() override;

  /// Sets how often the log level is asked for, in milliseconds, and starts asking; 0 changes
  /// nothing. Thread-safe.
  static void setLogControlRefreshInterval(unsigned int ms);
  /// The interval in milliseconds, 0 while nothing is asked for. Thread-safe.
  static unsigned int getLogControlRefreshInterval();

  static void initAutoconfigSet();
  /// Adds `id`, which is borrowed and compared by address, to AUTOCONFIG_SET unless it is there.
  static void addAutoconfig(const meta::Autoconfig* id);

  // ----- Calls from the management engine -------------------------------------------------------

  /// A stage of a state machine: the method object, two numbers of the state machine, the target's
  /// name, the call's number, and the target with what it resolves. Returning means success unless
  /// a failure was reported on the method object.
  template <class Me>
  using ExecuteStage = void(Me& me, const unsigned int& fsm, const unsigned int& stage,
                            const mo::Dn& target, const unsigned long& call,
                            const method::Config& config);
  /// Runs after the execution and before the outcome is sent.
  template <class Me>
  using FormatRsp = void(Me& me);
  /// An answer without results.
  template <class Me>
  using SuccessRsp = void(Me& me);
  template <class Me>
  using FailedRsp = void(Me& me, unsigned int code, const base::String& text);

  static void executeDmeapiClusterStateCb(dmeapi::ClusterStateMe& me,
                                          const unsigned long& clusterId,
                                          const unsigned char& state, const unsigned long& epoch);
  static FormatRsp<dmeapi::ClusterStateMe> formatSuccessRspDmeapiClusterStateCb;
  static FormatRsp<dmeapi::ClusterStateMe> formatFailedRspDmeapiClusterStateCb;

  static ExecuteStage<zan_dme::FsmSdAppInstanceInstallApplicationSendCommandMe>
      executeZanDmeFsmSdAppInstanceInstallApplicationSendCommandCb;
  static FormatRsp<zan_dme::FsmSdAppInstanceInstallApplicationSendCommandMe>
      formatSuccessRspZanDmeFsmSdAppInstanceInstallApplicationSendCommandCb;
  static FormatRsp<zan_dme::FsmSdAppInstanceInstallApplicationSendCommandMe>
      formatFailedRspZanDmeFsmSdAppInstanceInstallApplicationSendCommandCb;

  static ExecuteStage<zan_dme::FsmSdAppInstanceStartApplicationSendCommandMe>
      executeZanDmeFsmSdAppInstanceStartApplicationSendCommandCb;
  static FormatRsp<zan_dme::FsmSdAppInstanceStartApplicationSendCommandMe>
      formatSuccessRspZanDmeFsmSdAppInstanceStartApplicationSendCommandCb;
  static FormatRsp<zan_dme::FsmSdAppInstanceStartApplicationSendCommandMe>
      formatFailedRspZanDmeFsmSdAppInstanceStartApplicationSendCommandCb;

  static ExecuteStage<zan_dme::FsmSdAppInstanceStopApplicationSendCommandMe>
      executeZanDmeFsmSdAppInstanceStopApplicationSendCommandCb;
  static FormatRsp<zan_dme::FsmSdAppInstanceStopApplicationSendCommandMe>
      formatSuccessRspZanDmeFsmSdAppInstanceStopApplicationSendCommandCb;
  static FormatRsp<zan_dme::FsmSdAppInstanceStopApplicationSendCommandMe>
      formatFailedRspZanDmeFsmSdAppInstanceStopApplicationSendCommandCb;

  static ExecuteStage<zan_dme::FsmSdAppInstanceUninstallApplicationSendCommandMe>
      executeZanDmeFsmSdAppInstanceUninstallApplicationSendCommandCb;
  static FormatRsp<zan_dme::FsmSdAppInstanceUninstallApplicationSendCommandMe>
      formatSuccessRspZanDmeFsmSdAppInstanceUninstallApplicationSendCommandCb;
  static FormatRsp<zan_dme::FsmSdAppInstanceUninstallApplicationSendCommandMe>
      formatFailedRspZanDmeFsmSdAppInstanceUninstallApplicationSendCommandCb;

  static ExecuteStage<zan_dme::FsmSdAppInstanceUpgradeApplicationSendCommandMe>
      executeZanDmeFsmSdAppInstanceUpgradeApplicationSendCommandCb;
  static FormatRsp<zan_dme::FsmSdAppInstanceUpgradeApplicationSendCommandMe>
      formatSuccessRspZanDmeFsmSdAppInstanceUpgradeApplicationSendCommandCb;
  static FormatRsp<zan_dme::FsmSdAppInstanceUpgradeApplicationSendCommandMe>
      formatFailedRspZanDmeFsmSdAppInstanceUpgradeApplicationSendCommandCb;

  static ExecuteStage<zan_dme::FsmSdSlotChangePlatformLogLevelSendCommandMe>
      executeZanDmeFsmSdSlotChangePlatformLogLevelSendCommandCb;
  static FormatRsp<zan_dme::FsmSdSlotChangePlatformLogLevelSendCommandMe>
      formatSuccessRspZanDmeFsmSdSlotChangePlatformLogLevelSendCommandCb;
  static FormatRsp<zan_dme::FsmSdSlotChangePlatformLogLevelSendCommandMe>
      formatFailedRspZanDmeFsmSdSlotChangePlatformLogLevelSendCommandCb;

  static ExecuteStage<zan_dme::FsmSdSlotFormatDiskStartDiskFormatMe>
      executeZanDmeFsmSdSlotFormatDiskStartDiskFormatCb;
  static FormatRsp<zan_dme::FsmSdSlotFormatDiskStartDiskFormatMe>
      formatSuccessRspZanDmeFsmSdSlotFormatDiskStartDiskFormatCb;
  static FormatRsp<zan_dme::FsmSdSlotFormatDiskStartDiskFormatMe>
      formatFailedRspZanDmeFsmSdSlotFormatDiskStartDiskFormatCb;

  static void executeServiceorchapiClearApplicationLogDataCb(
      serviceorchapi::ClearApplicationLogDataMe& me, const base::String& appInstanceId,
      const unsigned int& slot);
  static FormatRsp<serviceorchapi::ClearApplicationLogDataMe>
      formatSuccessRspServiceorchapiClearApplicationLogDataCb;
  static FormatRsp<serviceorchapi::ClearApplicationLogDataMe>
      formatFailedRspServiceorchapiClearApplicationLogDataCb;

  static void executeServiceorchapiClearSystemLogDataCb(serviceorchapi::ClearSystemLogDataMe& me,
                                                        const unsigned int& slot);
  static FormatRsp<serviceorchapi::ClearSystemLogDataMe>
      formatSuccessRspServiceorchapiClearSystemLogDataCb;
  static FormatRsp<serviceorchapi::ClearSystemLogDataMe>
      formatFailedRspServiceorchapiClearSystemLogDataCb;

  /// Forgets the blade: no command reaches the slot until its blade registers again.
  static void executeServiceorchapiDeRegisterBladeCb(serviceorchapi::DeRegisterBladeMe& me,
                                                     const unsigned int& slot);
  static FormatRsp<serviceorchapi::DeRegisterBladeMe>
      formatSuccessRspServiceorchapiDeRegisterBladeCb;
  static FormatRsp<serviceorchapi::DeRegisterBladeMe>
      formatFailedRspServiceorchapiDeRegisterBladeCb;

  static void executeServiceorchapiGcovRequestCb(serviceorchapi::GcovRequestMe& me);
  static FormatRsp<serviceorchapi::GcovRequestMe> formatSuccessRspServiceorchapiGcovRequestCb;
  static FormatRsp<serviceorchapi::GcovRequestMe> formatFailedRspServiceorchapiGcovRequestCb;

  static void executeServiceorchapiUpdateTimeZoneCb(
      serviceorchapi::UpdateTimeZoneMe& me, const unsigned int& fsm, const unsigned int& stage,
      const mo::Dn& target, const unsigned long& call, const method::Config& config,
      const unsigned int& slot, const base::String& logLevel);
  static FormatRsp<serviceorchapi::UpdateTimeZoneMe> formatSuccessRspServiceorchapiUpdateTimeZoneCb;
  static FormatRsp<serviceorchapi::UpdateTimeZoneMe> formatFailedRspServiceorchapiUpdateTimeZoneCb;

  // ----- Answers of the management engine -------------------------------------------------------
  // Those that a blade request waits for hand the results to the waiting request, found by the
  // cookie of the method object; an answer that nobody waits for is dropped.

  static void successRspServiceorchapiValidateBladeStateCb(serviceorchapi::ValidateBladeStateMe& me,
                                                           const base::String& token,
                                                           const bool& bladeValid,
                                                           const bool& shouldRetry);
  static FailedRsp<serviceorchapi::ValidateBladeStateMe>
      failedRspServiceorchapiValidateBladeStateCb;

  static SuccessRsp<serviceorchapi::UpdatePlatformInfoMe>
      successRspServiceorchapiUpdatePlatformInfoCb;
  static FailedRsp<serviceorchapi::UpdatePlatformInfoMe>
      failedRspServiceorchapiUpdatePlatformInfoCb;

  /// `imageSize` in bytes.
  static void successRspServerapiOsControllerVersionCb(serverapi::OsControllerVersionMe& me,
                                                       const base::String& imagePath,
                                                       const base::String& checksum,
                                                       const unsigned int& imageSize);
  /// Wakes nobody: who waits for a platform image runs into the time-out.
  static FailedRsp<serverapi::OsControllerVersionMe> failedRspServerapiOsControllerVersionCb;

  static void successRspAgbootBootstrapCb(agboot::BootstrapMe& me, const method::ConfigSet& first,
                                          const method::ConfigSet& second,
                                          const method::ConfigSet& third,
                                          const method::ConfigSet& fourth);
  static FailedRsp<agboot::BootstrapMe> failedRspAgbootBootstrapCb;

  // The outcome of these is not used.
  static SuccessRsp<serviceorchapi::NotifyAppFailureMe> successRspServiceorchapiNotifyAppFailureCb;
  static FailedRsp<serviceorchapi::NotifyAppFailureMe> failedRspServiceorchapiNotifyAppFailureCb;
  static SuccessRsp<serviceorchapi::UpdateDiskFormatStatusMe>
      successRspServiceorchapiUpdateDiskFormatStatusCb;
  static FailedRsp<serviceorchapi::UpdateDiskFormatStatusMe>
      failedRspServiceorchapiUpdateDiskFormatStatusCb;
  static SuccessRsp<serviceorchapi::UpdateProgressMe> successRspServiceorchapiUpdateProgressCb;
  static FailedRsp<serviceorchapi::UpdateProgressMe> failedRspServiceorchapiUpdateProgressCb;
  static SuccessRsp<serviceorchapi::UpdateSmaHeartbeatMe>
      successRspServiceorchapiUpdateSmaHeartbeatCb;
  static FailedRsp<serviceorchapi::UpdateSmaHeartbeatMe>
      failedRspServiceorchapiUpdateSmaHeartbeatCb;
  static SuccessRsp<serviceorchapi::ValidateAppInstancesMe>
      successRspServiceorchapiValidateAppInstancesCb;
  static FailedRsp<serviceorchapi::ValidateAppInstancesMe>
      failedRspServiceorchapiValidateAppInstancesCb;
  static SuccessRsp<serverapi::OsControllerUpgradeProgressMe>
      successRspServerapiOsControllerUpgradeProgressCb;
  static FailedRsp<serverapi::OsControllerUpgradeProgressMe>
      failedRspServerapiOsControllerUpgradeProgressCb;
  static SuccessRsp<dmeapi::ClusterStateRequestMe> successRspDmeapiClusterStateRequestCb;
  static FailedRsp<dmeapi::ClusterStateRequestMe> failedRspDmeapiClusterStateRequestCb;
  static SuccessRsp<agboot::BootstrapDoneMe> successRspAgbootBootstrapDoneCb;
  static FailedRsp<agboot::BootstrapDoneMe> failedRspAgbootBootstrapDoneCb;

  // ----- Calls to the management engine ---------------------------------------------------------
  // None blocks, none reports a delivery failure: the answer, if one was required, arrives at the
  // callbacks above under the same cookie. Callable from any thread once the service is registered.
  // Every method also takes an object that the caller has filled, cookie included; the object is
  // taken over and must come from new.

  static void invokeZanDmeServiceorchapiValidateBladeState(
      const base::Buffer& cookie, unsigned int slot, const base::String& runningOsVersion,
      const base::String& token, bool responseRequired, proc::Stimulus::Priority priority);
  static void invokeZanDmeServiceorchapiValidateBladeState(serviceorchapi::ValidateBladeStateMe* me,
                                                           bool responseRequired,
                                                           proc::Stimulus::Priority priority);

  static void invokeZanDmeServerapiOsControllerVersion(
      const base::Buffer& cookie, const unsigned long& id, unsigned int chassis, unsigned int slot,
      const base::String& startupVersion, const base::String& runningVersion,
      const base::String& runningImage, unsigned int runningImageSize,
      const base::String& cachedVersion, const base::String& cachedImage,
      unsigned int cachedImageSize, bool bladeValid, unsigned char firstKind,
      unsigned char secondKind, const base::String& vendor, bool responseRequired,
      proc::Stimulus::Priority priority);
  static void invokeZanDmeServerapiOsControllerVersion(serverapi::OsControllerVersionMe* me,
                                                       bool responseRequired,
                                                       proc::Stimulus::Priority priority);

  static void invokeZanDmeServiceorchapiUpdatePlatformInfo(
      const base::Buffer& cookie, unsigned int slot, const method::Config& monitor,
      const method::ConfigSet& disks, bool responseRequired, proc::Stimulus::Priority priority);
  static void invokeZanDmeServiceorchapiUpdatePlatformInfo(serviceorchapi::UpdatePlatformInfoMe* me,
                                                           bool responseRequired,
                                                           proc::Stimulus::Priority priority);

  static void invokeZanDmeServiceorchapiValidateAppInstances(const base::Buffer& cookie,
                                                             unsigned int slot,
                                                             const method::ConfigSet& appInstances,
                                                             bool responseRequired,
                                                             proc::Stimulus::Priority priority);
  static void invokeZanDmeServiceorchapiValidateAppInstances(
      serviceorchapi::ValidateAppInstancesMe* me, bool responseRequired,
      proc::Stimulus::Priority priority);

  static void invokeZanDmeServiceorchapiUpdateSmaHeartbeat(const base::Buffer& cookie,
                                                           unsigned int slot, unsigned int count,
                                                           unsigned int timer,
                                                           bool responseRequired,
                                                           proc::Stimulus::Priority priority);
  static void invokeZanDmeServiceorchapiUpdateSmaHeartbeat(serviceorchapi::UpdateSmaHeartbeatMe* me,
                                                           bool responseRequired,
                                                           proc::Stimulus::Priority priority);

  static void invokeZanDmeServiceorchapiNotifyAppFailure(const base::Buffer& cookie,
                                                         const base::String& appInstanceId,
                                                         bool responseRequired,
                                                         proc::Stimulus::Priority priority);
  static void invokeZanDmeServiceorchapiNotifyAppFailure(serviceorchapi::NotifyAppFailureMe* me,
                                                         bool responseRequired,
                                                         proc::Stimulus::Priority priority);

  static void invokeZanDmeServiceorchapiUpdateProgress(
      const base::Buffer& cookie, const base::String& appInstanceId, unsigned char command,
      unsigned int progress, unsigned char status, unsigned int resultCode,
      const base::String& errorDesc, bool responseRequired, proc::Stimulus::Priority priority);
  static void invokeZanDmeServiceorchapiUpdateProgress(serviceorchapi::UpdateProgressMe* me,
                                                       bool responseRequired,
                                                       proc::Stimulus::Priority priority);

  static void invokeZanDmeServiceorchapiUpdateDiskFormatStatus(const base::Buffer& cookie,
                                                               unsigned int slot,
                                                               unsigned char status,
                                                               bool responseRequired,
                                                               proc::Stimulus::Priority priority);
  static void invokeZanDmeServiceorchapiUpdateDiskFormatStatus(
      serviceorchapi::UpdateDiskFormatStatusMe* me, bool responseRequired,
      proc::Stimulus::Priority priority);

  static void invokeZanDmeServerapiOsControllerUpgradeProgress(
      const base::Buffer& cookie, const unsigned long& id, unsigned int chassis, unsigned int slot,
      const base::String& version, unsigned int progress, unsigned char status,
      const base::String& imageKind, bool responseRequired, proc::Stimulus::Priority priority);
  static void invokeZanDmeServerapiOsControllerUpgradeProgress(
      serverapi::OsControllerUpgradeProgressMe* me, bool responseRequired,
      proc::Stimulus::Priority priority);

  static void invokeZanDmeDmeapiClusterStateRequest(const base::Buffer& cookie,
                                                    bool responseRequired,
                                                    proc::Stimulus::Priority priority);
  static void invokeZanDmeDmeapiClusterStateRequest(dmeapi::ClusterStateRequestMe* me,
                                                    bool responseRequired,
                                                    proc::Stimulus::Priority priority);

  static void invokeZanDmeAgbootBootstrap(const base::Buffer& cookie, bool responseRequired,
                                          proc::Stimulus::Priority priority);
  static void invokeZanDmeAgbootBootstrap(agboot::BootstrapMe* me, bool responseRequired,
                                          proc::Stimulus::Priority priority);

  static void invokeZanDmeAgbootBootstrapDone(const base::Buffer& cookie, bool responseRequired,
                                              proc::Stimulus::Priority priority);
  static void invokeZanDmeAgbootBootstrapDone(agboot::BootstrapDoneMe* me, bool responseRequired,
                                              proc::Stimulus::Priority priority);

 private:
  /// Makes the process's service and its object tree known to the framework.
  static Svc& registerService();
  /// Sets queue and pool to work.
  void activate();

  // In the order of construction; each may use those before it.
  std::unique_ptr<mo::Transactor> transactor_;
  std::unique_ptr<proc::Doer> doer_;
  std::unique_ptr<proc::QueueDeduplicatorImpl> deduplicator_;
  std::unique_ptr<os::ReactiveQueue> queue_;
  std::unique_ptr<os::ThreadPool> pool_;
  std::unique_ptr<dmemem::Mit> tree_;
  std::unique_ptr<net::ChannelBank> channels_;
  std::unique_ptr<proc::App> application_;
};

}  // namespace zan_serviceOrchAG
