#include "framework/proc/ServicePlugin.h"
#include "serviceOrchAG/svc/Svc.h"

// What the supervisor that loads this library finds in it.

namespace zan_serviceOrchAG {
namespace {

void initSvc() {
  proc::Svc::instance->initSvcCb();
}

constexpr proc::ServicePlugin kPlugin = {
    proc::ServicePlugin::kVersion,
    "serviceOrchAG",
    Svc::init,
    initSvc,
    Svc::mainCb,
    Svc::preShutdownCb,
    Svc::shutdownCb,
    Svc::postShutdownCb,
};

}  // namespace
}  // namespace zan_serviceOrchAG

extern "C" const proc::ServicePlugin* zanServicePlugin() {
  return &zan_serviceOrchAG::kPlugin;
}
