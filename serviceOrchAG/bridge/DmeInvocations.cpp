#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>

#include "framework/method/ArgCodec.h"
#include "framework/proc/BinStimulus.h"
#include "model/agboot/Methods.h"
#include "model/dmeapi/Methods.h"
#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/svc/Svc.h"

// The calls to the management engine. What differs between them is in the method objects: class
// id, intent, bulk and the types of the arguments.

namespace zan_serviceOrchAG {
namespace {

using proc::Stimulus;
using Priority = Stimulus::Priority;

/// Where the call goes and where it comes from: this service's own instance, or the one that keeps
/// the cluster's state.
template <class Me>
proc::Address addressOf() {
  constexpr std::uint32_t kEngine = 26;
  constexpr std::uint32_t kEngineInstance = 1;
  if constexpr (std::is_same_v<Me, dmeapi::ClusterStateRequestMe>) {
    return {kEngine, kEngineInstance, 4, 4};
  } else {
    return {kEngine, kEngineInstance, proc::Svc::instance->serviceId(), 0};
  }
}

template <class Me>
void direct(Stimulus& stimulus, bool responseRequired, Priority priority) {
  stimulus.setAddress(addressOf<Me>());
  stimulus.setResponseRequired(responseRequired);
  stimulus.setPriority(priority);
}

template <class Me, class... Args>
void invoke(const base::Buffer& cookie, bool responseRequired, Priority priority,
            const Args&... args) {
  static_assert(std::is_same_v<typename Me::InTuple, std::tuple<Args...>>,
                "the arguments travel in the types that the method declares");
  std::unique_ptr<proc::BinStimulus> stimulus =
      proc::BinStimulus::obtain(Me::kClassId, Me::kIntent, Me::kBulk);
  stimulus->setCookie(cookie);
  direct<Me>(*stimulus, responseRequired, priority);
  stimulus->serialize(stimulus->stream());
  (method::writeArg(stimulus->stream(), args), ...);
  proc::Svc::instance->send(std::move(stimulus));
}

template <class Me>
void invokeFilled(Me* me, bool responseRequired, Priority priority) {
  std::unique_ptr<Me> owned(me);
  direct<Me>(*owned, responseRequired, priority);
  proc::Svc::instance->send(std::move(owned));
}

}  // namespace

void Svc::invokeZanDmeServiceorchapiValidateBladeState(const base::Buffer& cookie,
                                                       unsigned int slot,
                                                       const base::String& runningOsVersion,
                                                       const base::String& token,
                                                       bool responseRequired, Priority priority) {
  invoke<serviceorchapi::ValidateBladeStateMe>(cookie, responseRequired, priority, slot,
                                               runningOsVersion, token);
}

void Svc::invokeZanDmeServerapiOsControllerVersion(
    const base::Buffer& cookie, const unsigned long& id, unsigned int chassis, unsigned int slot,
    const base::String& startupVersion, const base::String& runningVersion,
    const base::String& runningImage, unsigned int runningImageSize,
    const base::String& cachedVersion, const base::String& cachedImage,
    unsigned int cachedImageSize, bool bladeValid, unsigned char firstKind,
    unsigned char secondKind, const base::String& vendor, bool responseRequired,
    Priority priority) {
  invoke<serverapi::OsControllerVersionMe>(
      cookie, responseRequired, priority, id, chassis, slot, startupVersion, runningVersion,
      runningImage, runningImageSize, cachedVersion, cachedImage, cachedImageSize, bladeValid,
      firstKind, secondKind, vendor);
}

void Svc::invokeZanDmeServiceorchapiUpdatePlatformInfo(const base::Buffer& cookie,
                                                       unsigned int slot,
                                                       const method::Config& monitor,
                                                       const method::ConfigSet& disks,
                                                       bool responseRequired, Priority priority) {
  invoke<serviceorchapi::UpdatePlatformInfoMe>(cookie, responseRequired, priority, slot, monitor,
                                               disks);
}

void Svc::invokeZanDmeServiceorchapiValidateAppInstances(const base::Buffer& cookie,
                                                         unsigned int slot,
                                                         const method::ConfigSet& appInstances,
                                                         bool responseRequired, Priority priority) {
  invoke<serviceorchapi::ValidateAppInstancesMe>(cookie, responseRequired, priority, slot,
                                                 appInstances);
}

void Svc::invokeZanDmeServiceorchapiUpdateSmaHeartbeat(const base::Buffer& cookie,
                                                       unsigned int slot, unsigned int count,
                                                       unsigned int timer, bool responseRequired,
                                                       Priority priority) {
  invoke<serviceorchapi::UpdateSmaHeartbeatMe>(cookie, responseRequired, priority, slot, count,
                                               timer);
}

void Svc::invokeZanDmeServiceorchapiNotifyAppFailure(const base::Buffer& cookie,
                                                     const base::String& appInstanceId,
                                                     bool responseRequired, Priority priority) {
  invoke<serviceorchapi::NotifyAppFailureMe>(cookie, responseRequired, priority, appInstanceId);
}

void Svc::invokeZanDmeServiceorchapiUpdateProgress(const base::Buffer& cookie,
                                                   const base::String& appInstanceId,
                                                   unsigned char command, unsigned int progress,
                                                   unsigned char status, unsigned int resultCode,
                                                   const base::String& errorDesc,
                                                   bool responseRequired, Priority priority) {
  invoke<serviceorchapi::UpdateProgressMe>(cookie, responseRequired, priority, appInstanceId,
                                           command, progress, status, resultCode, errorDesc);
}

void Svc::invokeZanDmeServiceorchapiUpdateDiskFormatStatus(const base::Buffer& cookie,
                                                           unsigned int slot, unsigned char status,
                                                           bool responseRequired,
                                                           Priority priority) {
  invoke<serviceorchapi::UpdateDiskFormatStatusMe>(cookie, responseRequired, priority, slot,
                                                   status);
}

void Svc::invokeZanDmeServerapiOsControllerUpgradeProgress(
    const base::Buffer& cookie, const unsigned long& id, unsigned int chassis, unsigned int slot,
    const base::String& version, unsigned int progress, unsigned char status,
    const base::String& imageKind, bool responseRequired, Priority priority) {
  invoke<serverapi::OsControllerUpgradeProgressMe>(cookie, responseRequired, priority, id, chassis,
                                                   slot, version, progress, status, imageKind);
}

void Svc::invokeZanDmeDmeapiClusterStateRequest(const base::Buffer& cookie, bool responseRequired,
                                                Priority priority) {
  invoke<dmeapi::ClusterStateRequestMe>(cookie, responseRequired, priority);
}

void Svc::invokeZanDmeAgbootBootstrap(const base::Buffer& cookie, bool responseRequired,
                                      Priority priority) {
  invoke<agboot::BootstrapMe>(cookie, responseRequired, priority);
}

void Svc::invokeZanDmeAgbootBootstrapDone(const base::Buffer& cookie, bool responseRequired,
                                          Priority priority) {
  invoke<agboot::BootstrapDoneMe>(cookie, responseRequired, priority);
}

void Svc::invokeZanDmeServiceorchapiValidateBladeState(serviceorchapi::ValidateBladeStateMe* me,
                                                       bool responseRequired, Priority priority) {
  invokeFilled(me, responseRequired, priority);
}

void Svc::invokeZanDmeServerapiOsControllerVersion(serverapi::OsControllerVersionMe* me,
                                                   bool responseRequired, Priority priority) {
  invokeFilled(me, responseRequired, priority);
}

void Svc::invokeZanDmeServiceorchapiUpdatePlatformInfo(serviceorchapi::UpdatePlatformInfoMe* me,
                                                       bool responseRequired, Priority priority) {
  invokeFilled(me, responseRequired, priority);
}

void Svc::invokeZanDmeServiceorchapiValidateAppInstances(serviceorchapi::ValidateAppInstancesMe* me,
                                                         bool responseRequired, Priority priority) {
  invokeFilled(me, responseRequired, priority);
}

void Svc::invokeZanDmeServiceorchapiUpdateSmaHeartbeat(serviceorchapi::UpdateSmaHeartbeatMe* me,
                                                       bool responseRequired, Priority priority) {
  invokeFilled(me, responseRequired, priority);
}

void Svc::invokeZanDmeServiceorchapiNotifyAppFailure(serviceorchapi::NotifyAppFailureMe* me,
                                                     bool responseRequired, Priority priority) {
  invokeFilled(me, responseRequired, priority);
}

void Svc::invokeZanDmeServiceorchapiUpdateProgress(serviceorchapi::UpdateProgressMe* me,
                                                   bool responseRequired, Priority priority) {
  invokeFilled(me, responseRequired, priority);
}

void Svc::invokeZanDmeServiceorchapiUpdateDiskFormatStatus(
    serviceorchapi::UpdateDiskFormatStatusMe* me, bool responseRequired, Priority priority) {
  invokeFilled(me, responseRequired, priority);
}

void Svc::invokeZanDmeServerapiOsControllerUpgradeProgress(
    serverapi::OsControllerUpgradeProgressMe* me, bool responseRequired, Priority priority) {
  invokeFilled(me, responseRequired, priority);
}

void Svc::invokeZanDmeDmeapiClusterStateRequest(dmeapi::ClusterStateRequestMe* me,
                                                bool responseRequired, Priority priority) {
  invokeFilled(me, responseRequired, priority);
}

void Svc::invokeZanDmeAgbootBootstrap(agboot::BootstrapMe* me, bool responseRequired,
                                      Priority priority) {
  invokeFilled(me, responseRequired, priority);
}

void Svc::invokeZanDmeAgbootBootstrapDone(agboot::BootstrapDoneMe* me, bool responseRequired,
                                          Priority priority) {
  invokeFilled(me, responseRequired, priority);
}

}  // namespace zan_serviceOrchAG
