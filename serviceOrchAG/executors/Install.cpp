#include "model/zan_dme/Methods.h"
#include "serviceOrchAG/svc/Svc.h"

namespace zan_serviceOrchAG {

void Svc::executeZanDmeFsmSdAppInstanceInstallApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceInstallApplicationSendCommandMe&, const unsigned int&,
    const unsigned int&, const mo::Dn&, const unsigned long&, const method::Config&) {}
void Svc::formatSuccessRspZanDmeFsmSdAppInstanceInstallApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceInstallApplicationSendCommandMe&) {}
void Svc::formatFailedRspZanDmeFsmSdAppInstanceInstallApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceInstallApplicationSendCommandMe&) {}

}  // namespace zan_serviceOrchAG
