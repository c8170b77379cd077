#include "supervisor/admin/Routes.h"

#include "supervisor/admin/AppResource.h"
#include "supervisor/admin/AppVerbs.h"
#include "supervisor/admin/ChassisResource.h"
#include "supervisor/admin/EquipmentResource.h"
#include "supervisor/admin/FaultResource.h"
#include "supervisor/admin/HealthResource.h"
#include "supervisor/admin/JobResource.h"
#include "supervisor/admin/ModelResource.h"
#include "supervisor/admin/SlotResource.h"
#include "supervisor/admin/SlotVerbs.h"
#include "supervisor/admin/TimeZoneResource.h"

namespace supervisor::admin {

std::span<const Route> routes() {
  static const Route kRoutes[] = {
      {"GET", "/api/v1/apps", &getApps, {"slot"}},
      {"POST", "/api/v1/apps", &postApp},
      {"GET", "/api/v1/apps/{id}", &getApp},
      {"DELETE", "/api/v1/apps/{id}", &deleteApp, {"dryRun"}},
      {"POST", "/api/v1/apps/{id}/clear-logs", &clearAppLogs, {"dryRun"}},
      {"POST", "/api/v1/apps/{id}/install", &installApp, {"dryRun"}},
      {"POST", "/api/v1/apps/{id}/start", &startApp, {"dryRun"}},
      {"POST", "/api/v1/apps/{id}/stop", &stopApp, {"dryRun"}},
      {"POST", "/api/v1/apps/{id}/uninstall", &uninstallApp, {"dryRun"}},
      {"POST", "/api/v1/apps/{id}/upgrade", &upgradeApp, {"dryRun"}},
      {"GET", "/api/v1/chassis", &getChassis},
      {"PATCH", "/api/v1/chassis", &patchChassis, {"dryRun"}},
      {"GET", "/api/v1/faults", &getFaults, {}, false},
      {"DELETE", "/api/v1/faults", &deleteFaults, {}, false},
      {"PUT", "/api/v1/faults/{hook}", &putFault, {}, false},
      {"DELETE", "/api/v1/faults/{hook}", &deleteFault, {}, false},
      {"GET", "/api/v1/health", &getHealth, {}, false},
      {"GET", "/api/v1/jobs", &getJobs, {"slot", "app", "state", "before", "limit"}},
      {"GET", "/api/v1/jobs/{id}", &getJob, {"waitMs", "revision"}},
      {"POST", "/api/v1/jobs/{id}/cancel", &cancelJob},
      {"GET", "/api/v1/model", &getModel, {"dn"}},
      {"GET", "/api/v1/slots", &getSlots},
      {"GET", "/api/v1/slots/{number}", &getSlot},
      {"PATCH", "/api/v1/slots/{number}", &patchSlot, {"dryRun"}},
      {"POST", "/api/v1/slots/{number}/clear-logs", &clearSlotLogs, {"dryRun"}},
      {"POST", "/api/v1/slots/{number}/deregister", &deregisterSlot, {"dryRun"}},
      {"POST", "/api/v1/slots/{number}/format", &formatSlot, {"dryRun"}},
      {"POST", "/api/v1/slots/{number}/log-level", &setSlotLogLevel, {"dryRun"}},
      {"GET", "/api/v1/timezone", &getTimeZone},
      {"PUT", "/api/v1/timezone", &putTimeZone},
  };
  return kRoutes;
}

}  // namespace supervisor::admin
