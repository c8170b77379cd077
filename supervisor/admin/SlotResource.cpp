#include "supervisor/admin/SlotResource.h"

#include <charconv>
#include <optional>

#include "model/sd/SlotMo.h"
#include "supervisor/admin/Context.h"
#include "supervisor/admin/EngineView.h"
#include "supervisor/admin/Json.h"
#include "supervisor/admin/Problem.h"
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

std::optional<std::uint32_t> numberOf(const std::string& text) {
  std::uint32_t number = 0;
  const char* end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && last == end ? std::optional(number) : std::nullopt;
}

}  // namespace

Response getSlots(const Context& context, const Request& /*request*/) {
  Json slots = Json::array();
  for (const dme::SlotView& slot : context.engine->slots()) {
    slots.push_back(toJson(slot));
  }
  return jsonResponse({{"slots", std::move(slots)}});
}

Response getSlot(const Context& context, const Request& request) {
  const std::string& text = request.parameters.front();
  const auto number = numberOf(text);
  const auto slot = number ? context.engine->slot(*number) : std::nullopt;
  if (!slot) {
    return toResponse({404, "unknown-slot", "There is no slot of this number",
                       "no slot has the number '" + text + "'", "see the slots at /api/v1/slots"});
  }
  Json json = toJson(*slot);
  const std::string dn = "sys/chassis-1/slot-" + std::to_string(slot->slot);
  json.update(describeBelowSlot(dn, context.engine->model(mo::Dn(dn))));
  return jsonResponse(json);
}

}  // namespace supervisor::admin
