#include "supervisor/admin/ModelResource.h"

#include "supervisor/admin/Context.h"
#include "supervisor/admin/EngineView.h"
#include "supervisor/admin/Json.h"

namespace supervisor::admin {

Response getModel(const Context& context, const Request& request) {
  const auto dn = request.query.find("dn");
  const std::string name = dn == request.query.end() ? "" : dn->second;
  const auto objects = context.engine->model(mo::Dn(name));
  if (objects.empty()) {
    return toResponse(unknownObject(name));
  }
  return {200, "application/json", renderModel(objects), ""};
}

Problem unknownObject(const std::string& dn) {
  return {404, "unknown-object", "There is no object of this name",
          "no object is named '" + dn + "'",
          "read the whole tree to see the names, e.g. sys/chassis-1/slot-3"};
}

}  // namespace supervisor::admin
