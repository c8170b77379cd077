#include "supervisor/admin/Routes.h"

#include "supervisor/admin/ChassisResource.h"
#include "supervisor/admin/HealthResource.h"
#include "supervisor/admin/ModelResource.h"
#include "supervisor/admin/SlotResource.h"

namespace supervisor::admin {

std::span<const Route> routes() {
  static const Route kRoutes[] = {
      {"GET", "/api/v1/chassis", &getChassis},     {"GET", "/api/v1/health", &getHealth, {}, false},
      {"GET", "/api/v1/model", &getModel, {"dn"}}, {"GET", "/api/v1/slots", &getSlots},
      {"GET", "/api/v1/slots/{number}", &getSlot},
  };
  return kRoutes;
}

}  // namespace supervisor::admin
