#include <mutex>
#include <string>

#include "framework/agboot/AgBootstrap.h"
#include "framework/base/SvcConfigParams.h"
#include "framework/core_log/Log.h"
#include "framework/proc/StateRequest.h"
#include "model/agboot/Methods.h"
#include "model/dmeapi/Methods.h"
#include "model/serverapi/Methods.h"
#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/bridge/ResponseSync.h"
#include "serviceOrchAG/server/MsgHandler.h"
#include "serviceOrchAG/svc/Svc.h"

// The answers of the management engine. They run on the service's queue and pool, at the same time
// as the request handlers that wait for them.

namespace zan_serviceOrchAG {
namespace {

constexpr int kTrace = 1;

/// Traces the call, then lets `write` fill in what the handler waits for and wakes it. The answer
/// is dropped when nobody waits under the cookie, any more or at all.
///
/// The wait object's lock is held until its event is set: the handler takes that lock before it
/// lets go of the object.
template <class Write>
void answerWaiter(const char* function, core_log::FormatString<> trace, const proc::Stimulus& me,
                  Write write) {
  core_log::logPrintf(function, core_log::serviceLevel(), kTrace, trace);
  ResponseSync* waiter = MsgHandler::getInstance()->lockPending(me.cookie());
  if (waiter == nullptr) {
    return;
  }
  const std::lock_guard<os::CriticalSection> held(waiter->lock, std::adopt_lock);
  write(*waiter);
  waiter->event.set();
}

/// The engine's path begins with "/".
std::string imageUrl(const base::String& imagePath) {
  return "tftp://" + base::SvcConfigParams::getInstance().getTftpAddress().str() + imagePath.str();
}

}  // namespace

void Svc::successRspServiceorchapiValidateBladeStateCb(serviceorchapi::ValidateBladeStateMe& me,
                                                       const base::String& token,
                                                       const bool& bladeValid,
                                                       const bool& shouldRetry) {
  answerWaiter("successRspServiceorchapiValidateBladeStateCb",
               "successRspServiceorchapiValidateBladeStateCb", me, [&](ResponseSync& waiter) {
                 waiter.token = token.str();
                 waiter.result = bladeValid;
                 waiter.shouldRetry = shouldRetry;
               });
}

void Svc::failedRspServiceorchapiValidateBladeStateCb(serviceorchapi::ValidateBladeStateMe& me,
                                                      unsigned int, const base::String&) {
  // Log readers know the line by this name, which was that of another callback once.
  answerWaiter("failedRspServiceorchapiValidateBladeStateCb",
               "failedRspAppapiGetInterfaceMappingCb", me,
               [](ResponseSync& waiter) { waiter.result = false; });
}

void Svc::successRspServiceorchapiUpdatePlatformInfoCb(serviceorchapi::UpdatePlatformInfoMe& me) {
  answerWaiter("successRspServiceorchapiUpdatePlatformInfoCb",
               "successRspServiceorchapiUpdatePlatformInfoCb", me,
               [](ResponseSync& waiter) { waiter.result = true; });
}

void Svc::failedRspServiceorchapiUpdatePlatformInfoCb(serviceorchapi::UpdatePlatformInfoMe& me,
                                                      unsigned int, const base::String&) {
  answerWaiter("failedRspServiceorchapiUpdatePlatformInfoCb",
               "failedRspServiceorchapiUpdatePlatformInfoCb", me,
               [](ResponseSync& waiter) { waiter.result = false; });
}

void Svc::successRspServerapiOsControllerVersionCb(serverapi::OsControllerVersionMe& me,
                                                   const base::String& imagePath,
                                                   const base::String& checksum,
                                                   const unsigned int& imageSize) {
  answerWaiter("successRspServerapiOsControllerVersionCb",
               "successRspServerapiOsControllerVersionCb", me, [&](ResponseSync& waiter) {
                 core_log::logPrintf("successRspServerapiOsControllerVersionCb",
                                     core_log::serviceLevel(), kTrace,
                                     "imagePath = %s, checkSum = %s , imageSize = %d",
                                     imagePath.c_str(), checksum.c_str(), imageSize);
                 if (!imagePath.empty()) {
                   waiter.imagePath = imageUrl(imagePath);
                 }
                 waiter.checksum = checksum.str();
                 waiter.imageSize = imageSize;
               });
}

void Svc::successRspAgbootBootstrapCb(agboot::BootstrapMe& me, const method::ConfigSet&,
                                      const method::ConfigSet&, const method::ConfigSet&,
                                      const method::ConfigSet&) {
  agboot::AgBootstrap::get().processBootstrapResponse(me);
}

void Svc::executeDmeapiClusterStateCb(dmeapi::ClusterStateMe&, const unsigned long& clusterId,
                                      const unsigned char& state, const unsigned long& epoch) {
  proc::StateRequest::get().processStateResponse(clusterId, state, epoch);
}

// The outcome of the other calls is not used.

void Svc::successRspServiceorchapiNotifyAppFailureCb(serviceorchapi::NotifyAppFailureMe&) {}
void Svc::failedRspServiceorchapiNotifyAppFailureCb(serviceorchapi::NotifyAppFailureMe&,
                                                    unsigned int, const base::String&) {}
void Svc::successRspServiceorchapiUpdateDiskFormatStatusCb(
    serviceorchapi::UpdateDiskFormatStatusMe&) {}
void Svc::failedRspServiceorchapiUpdateDiskFormatStatusCb(serviceorchapi::UpdateDiskFormatStatusMe&,
                                                          unsigned int, const base::String&) {}
void Svc::successRspServiceorchapiUpdateProgressCb(serviceorchapi::UpdateProgressMe&) {}
void Svc::failedRspServiceorchapiUpdateProgressCb(serviceorchapi::UpdateProgressMe&, unsigned int,
                                                  const base::String&) {}
void Svc::successRspServiceorchapiUpdateSmaHeartbeatCb(serviceorchapi::UpdateSmaHeartbeatMe&) {}
void Svc::failedRspServiceorchapiUpdateSmaHeartbeatCb(serviceorchapi::UpdateSmaHeartbeatMe&,
                                                      unsigned int, const base::String&) {}
void Svc::successRspServiceorchapiValidateAppInstancesCb(serviceorchapi::ValidateAppInstancesMe&) {}
void Svc::failedRspServiceorchapiValidateAppInstancesCb(serviceorchapi::ValidateAppInstancesMe&,
                                                        unsigned int, const base::String&) {}
void Svc::successRspServerapiOsControllerUpgradeProgressCb(
    serverapi::OsControllerUpgradeProgressMe&) {}
void Svc::failedRspServerapiOsControllerUpgradeProgressCb(serverapi::OsControllerUpgradeProgressMe&,
                                                          unsigned int, const base::String&) {}
void Svc::successRspDmeapiClusterStateRequestCb(dmeapi::ClusterStateRequestMe&) {}
void Svc::failedRspDmeapiClusterStateRequestCb(dmeapi::ClusterStateRequestMe&, unsigned int,
                                               const base::String&) {}
void Svc::successRspAgbootBootstrapDoneCb(agboot::BootstrapDoneMe&) {}
void Svc::failedRspAgbootBootstrapDoneCb(agboot::BootstrapDoneMe&, unsigned int,
                                         const base::String&) {}
void Svc::failedRspServerapiOsControllerVersionCb(serverapi::OsControllerVersionMe&, unsigned int,
                                                  const base::String&) {}
void Svc::failedRspAgbootBootstrapCb(agboot::BootstrapMe&, unsigned int, const base::String&) {}
void Svc::formatSuccessRspDmeapiClusterStateCb(dmeapi::ClusterStateMe&) {}
void Svc::formatFailedRspDmeapiClusterStateCb(dmeapi::ClusterStateMe&) {}

}  // namespace zan_serviceOrchAG
