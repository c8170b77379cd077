#include "model/serviceorchapi/Methods.h"
#include "serviceOrchAG/svc/Svc.h"

namespace zan_serviceOrchAG {

void Svc::executeServiceorchapiClearApplicationLogDataCb(serviceorchapi::ClearApplicationLogDataMe&,
                                                         const base::String&, const unsigned int&) {
}
void Svc::formatSuccessRspServiceorchapiClearApplicationLogDataCb(
    serviceorchapi::ClearApplicationLogDataMe&) {}
void Svc::formatFailedRspServiceorchapiClearApplicationLogDataCb(
    serviceorchapi::ClearApplicationLogDataMe&) {}

void Svc::executeServiceorchapiClearSystemLogDataCb(serviceorchapi::ClearSystemLogDataMe&,
                                                    const unsigned int&) {}
void Svc::formatSuccessRspServiceorchapiClearSystemLogDataCb(
    serviceorchapi::ClearSystemLogDataMe&) {}
void Svc::formatFailedRspServiceorchapiClearSystemLogDataCb(serviceorchapi::ClearSystemLogDataMe&) {
}

}  // namespace zan_serviceOrchAG
