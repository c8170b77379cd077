#include "model/zan_dme/Methods.h"
#include "serviceOrchAG/svc/Svc.h"

namespace zan_serviceOrchAG {

void Svc::executeZanDmeFsmSdAppInstanceStopApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceStopApplicationSendCommandMe&, const unsigned int&,
    const unsigned int&, const mo::Dn&, const unsigned long&, const method::Config&) {}
void Svc::formatSuccessRspZanDmeFsmSdAppInstanceStopApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceStopApplicationSendCommandMe&) {}
void Svc::formatFailedRspZanDmeFsmSdAppInstanceStopApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceStopApplicationSendCommandMe&) {}

void Svc::executeZanDmeFsmSdAppInstanceUninstallApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceUninstallApplicationSendCommandMe&, const unsigned int&,
    const unsigned int&, const mo::Dn&, const unsigned long&, const method::Config&) {}
void Svc::formatSuccessRspZanDmeFsmSdAppInstanceUninstallApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceUninstallApplicationSendCommandMe&) {}
void Svc::formatFailedRspZanDmeFsmSdAppInstanceUninstallApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceUninstallApplicationSendCommandMe&) {}

}  // namespace zan_serviceOrchAG
