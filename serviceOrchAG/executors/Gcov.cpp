#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/svc/Svc.h"

namespace zan_serviceOrchAG {

void Svc::executeServiceorchapiGcovRequestCb(serviceorchapi::GcovRequestMe&) {}
void Svc::formatSuccessRspServiceorchapiGcovRequestCb(serviceorchapi::GcovRequestMe&) {}
void Svc::formatFailedRspServiceorchapiGcovRequestCb(serviceorchapi::GcovRequestMe&) {}

}  // namespace zan_serviceOrchAG
