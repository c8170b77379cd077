#include "supervisor/admin/EquipmentResource.h"

#include "supervisor/admin/Context.h"
#include "supervisor/admin/EngineView.h"
#include "supervisor/admin/Fields.h"
#include "supervisor/admin/JsonBody.h"
#include "supervisor/admin/Problem.h"
#include "supervisor/admin/Query.h"
#include "supervisor/admin/RefusalProblem.h"
#include "supervisor/admin/SlotResource.h"

namespace supervisor::admin {
namespace {

dme::EquipmentChange readChange(const Request& request) {
  const Json body = bodyOf(request);
  Fields fields(body);
  dme::EquipmentChange change;
  change.name = fields.text("name");
  change.model = fields.text("model");
  change.serial = fields.text("serial");
  fields.end();
  if (change == dme::EquipmentChange{}) {
    throw ProblemError(
        badValue("", "nothing is to be changed", "give 'name', 'model' or 'serial'"));
  }
  return change;
}

Json toJson(dme::EquipmentPlace place, const dme::Equipment& equipment) {
  Json json = Json::object();
  if (place) {
    json["slot"] = *place;
  }
  json["name"] = equipment.name;
  json["model"] = equipment.model;
  json["serial"] = equipment.serial;
  return json;
}

void patch(const Context& context, const Request& request, const Reply& reply,
           dme::EquipmentPlace place) {
  const dme::EquipmentChange change = readChange(request);
  if (flagField(request, "dryRun")) {
    reply(answerOf(context.engine->wouldDescribe(place, change),
                   [place](const dme::Equipment& equipment) {
                     return jsonResponse({{"would", toJson(place, equipment)}});
                   }));
    return;
  }
  context.engine->describe(place, change,
                           [reply, place](const dme::Granted<dme::Equipment>& granted) {
                             reply(answerOf(granted, [place](const dme::Equipment& equipment) {
                               return jsonResponse(toJson(place, equipment));
                             }));
                           });
}

}  // namespace

void patchChassis(const Context& context, const Request& request, const Reply& reply) {
  patch(context, request, reply, std::nullopt);
}

void patchSlot(const Context& context, const Request& request, const Reply& reply) {
  patch(context, request, reply, slotStep(request));
}

}  // namespace supervisor::admin
