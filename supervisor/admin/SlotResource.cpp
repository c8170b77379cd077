#include "supervisor/admin/SlotResource.h"

#include <limits>

#include "model/sd/SlotMo.h"
#include "supervisor/admin/Context.h"
#include "supervisor/admin/EngineView.h"
#include "supervisor/admin/Json.h"
#include "supervisor/admin/Query.h"
#include "supervisor/admin/RefusalProblem.h"
#include "supervisor/admin/SlotTree.h"

namespace supervisor::admin {
namespace {

const char* nameOf(sd::Admission admission) {
  switch (admission) {
    case sd::Admission::kNone:
      return "none";
    case sd::Admission::kTokenIssued:
      return "tokenIssued";
    case sd::Admission::kValid:
      return "valid";
    case sd::Admission::kForeign:
      return "foreign";
  }
  return "unknown";
}

Json image(const std::string& version, const std::string& name, std::uint32_t bytes) {
  return {{"version", version}, {"image", name}, {"bytes", bytes}};
}

Json toJson(const dme::SlotView& slot) {
  Json json{{"slot", slot.slot},
            {"name", slot.name},
            {"model", slot.model},
            {"serial", slot.serial},
            {"state", dme::BladeMonitor::nameOf(slot.state)},
            {"isWatched", slot.isWatched},
            {"admission", nameOf(slot.admission)},
            {"hasToken", slot.hasToken},
            {"registrations", slot.registrations},
            {"running", image(slot.runningVersion, slot.runningImage, slot.runningImageSize)},
            {"cached", image(slot.cachedVersion, slot.cachedImage, slot.cachedImageSize)},
            {"beats",
             {{"received", slot.beats},
              {"duplicates", slot.duplicates},
              {"missed", slot.missed},
              {"restarts", slot.restarts},
              {"lastCount", slot.lastCount},
              {"lastTimer", slot.lastTimer},
              {"sinceLastMs", nullptr}}}};
  if (slot.sinceLastBeat) {
    json["beats"]["sinceLastMs"] = slot.sinceLastBeat->count();
  }
  return json;
}

Problem unknownSlot(const std::string& step) {
  return toProblem({dme::Refusal::Reason::kUnknownSlot, "no slot has the number '" + step + "'",
                    "see the slots at /api/v1/slots"});
}

}  // namespace

std::uint32_t slotStep(const Request& request) {
  const std::string& step = request.parameters.front();
  const auto number = numberOf(step);
  if (!number || *number > std::numeric_limits<std::uint32_t>::max()) {
    throw ProblemError(unknownSlot(step));
  }
  return static_cast<std::uint32_t>(*number);
}

Response getSlots(const Context& context, const Request& /*request*/) {
  Json slots = Json::array();
  for (const dme::SlotView& slot : context.engine->slots()) {
    slots.push_back(toJson(slot));
  }
  return jsonResponse({{"slots", std::move(slots)}});
}

Response getSlot(const Context& context, const Request& request) {
  const auto slot = context.engine->slot(slotStep(request));
  if (!slot) {
    throw ProblemError(unknownSlot(request.parameters.front()));
  }
  Json json = toJson(*slot);
  const std::string dn = "sys/chassis-1/slot-" + std::to_string(slot->slot);
  json.update(describeBelowSlot(dn, context.engine->model(mo::Dn(dn))));
  return jsonResponse(json);
}

}  // namespace supervisor::admin
