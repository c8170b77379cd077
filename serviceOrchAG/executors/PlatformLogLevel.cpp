#include "model/zan_dme/Methods.h"
#include "serviceOrchAG/svc/Svc.h"

namespace zan_serviceOrchAG {

void Svc::executeZanDmeFsmSdSlotChangePlatformLogLevelSendCommandCb(
    zan_dme::FsmSdSlotChangePlatformLogLevelSendCommandMe&, const unsigned int&,
    const unsigned int&, const mo::Dn&, const unsigned long&, const method::Config&) {}
void Svc::formatSuccessRspZanDmeFsmSdSlotChangePlatformLogLevelSendCommandCb(
    zan_dme::FsmSdSlotChangePlatformLogLevelSendCommandMe&) {}
void Svc::formatFailedRspZanDmeFsmSdSlotChangePlatformLogLevelSendCommandCb(
    zan_dme::FsmSdSlotChangePlatformLogLevelSendCommandMe&) {}

}  // namespace zan_serviceOrchAG
