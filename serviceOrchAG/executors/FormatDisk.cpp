#include "model/zan_dme/Methods.h"
#include "serviceOrchAG/svc/Svc.h"

namespace zan_serviceOrchAG {

void Svc::executeZanDmeFsmSdSlotFormatDiskStartDiskFormatCb(
    zan_dme::FsmSdSlotFormatDiskStartDiskFormatMe&, const unsigned int&, const unsigned int&,
    const mo::Dn&, const unsigned long&, const method::Config&) {}
void Svc::formatSuccessRspZanDmeFsmSdSlotFormatDiskStartDiskFormatCb(
    zan_dme::FsmSdSlotFormatDiskStartDiskFormatMe&) {}
void Svc::formatFailedRspZanDmeFsmSdSlotFormatDiskStartDiskFormatCb(
    zan_dme::FsmSdSlotFormatDiskStartDiskFormatMe&) {}

}  // namespace zan_serviceOrchAG
