#include "model/zan_dme/Methods.h"
#include "serviceOrchAG/svc/Svc.h"

namespace zan_serviceOrchAG {

void Svc::executeZanDmeFsmSdAppInstanceUpgradeApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceUpgradeApplicationSendCommandMe&, const unsigned int&,
    const unsigned int&, const mo::Dn&, const unsigned long&, const method::Config&) {}
void Svc::formatSuccessRspZanDmeFsmSdAppInstanceUpgradeApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceUpgradeApplicationSendCommandMe&) {}
void Svc::formatFailedRspZanDmeFsmSdAppInstanceUpgradeApplicationSendCommandCb(
    zan_dme::FsmSdAppInstanceUpgradeApplicationSendCommandMe&) {}

}  // namespace zan_serviceOrchAG
