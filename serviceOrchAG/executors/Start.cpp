#include "model/zan_dme/Methods.h"
#include "serviceOrchAG/svc/Svc.h"

namespace zan_serviceOrchAG {

void Svc::executeZanDmeFsmSdAppInstanceStartApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceStartApplicationSendCommandMe&, const unsigned int&,
    const unsigned int&, const mo::Dn&, const unsigned long&, const method::Config&) {}
void Svc::formatSuccessRspZanDmeFsmSdAppInstanceStartApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceStartApplicationSendCommandMe&) {}
void Svc::formatFailedRspZanDmeFsmSdAppInstanceStartApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceStartApplicationSendCommandMe&) {}

}  // namespace zan_serviceOrchAG
