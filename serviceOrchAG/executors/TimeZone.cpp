#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/svc/Svc.h"

namespace zan_serviceOrchAG {

void Svc::executeServiceorchapiUpdateTimeZoneCb(serviceorchapi::UpdateTimeZoneMe&,
                                                const unsigned int&, const unsigned int&,
                                                const mo::Dn&, const unsigned long&,
                                                const method::Config&, const unsigned int&,
                                                const base::String&) {}
void Svc::formatSuccessRspServiceorchapiUpdateTimeZoneCb(serviceorchapi::UpdateTimeZoneMe&) {}
void Svc::formatFailedRspServiceorchapiUpdateTimeZoneCb(serviceorchapi::UpdateTimeZoneMe&) {}

}  // namespace zan_serviceOrchAG
