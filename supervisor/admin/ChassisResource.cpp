#include "supervisor/admin/ChassisResource.h"

#include "supervisor/admin/Context.h"
#include "supervisor/admin/EngineView.h"
#include "supervisor/admin/Json.h"

namespace supervisor::admin {

Response getChassis(const Context& context, const Request& /*request*/) {
  const dme::EngineStatus status = context.engine->status();
  const dme::Equipment chassis = context.engine->equipment(std::nullopt).value_or(dme::Equipment{});
  return jsonResponse({
      {"name", chassis.name},
      {"model", chassis.model},
      {"serial", chassis.serial},
      {"clusterId", status.clusterId},
      {"epoch", status.epoch},
      {"slots", status.slots},
      {"blades",
       {{"watched", status.watched},
        {"alive", status.alive},
        {"late", status.late},
        {"silent", status.silent}}},
      {"areActionsHeld", status.areActionsHeld},
      {"alarms", status.alarms},
      {"calls",
       {{"dropped", status.dropped},
        {"undecodable", status.methods.undecodable},
        {"unknown", status.methods.unknownMethods},
        {"refused", status.methods.refused},
        {"strayBeats", status.methods.strayBeats}}},
      {"database",
       {{"transactions", status.commits.transactions},
        {"commits", status.commits.commits},
        {"failures", status.commits.failures}}},
  });
}

}  // namespace supervisor::admin
