#include "sma/Control.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "sma/BladeJson.h"
#include "sma/scenario/ScenarioReader.h"

namespace sma {
namespace {

using Json = nlohmann::json;

constexpr unsigned kMostSlot = 65535;
constexpr unsigned kMostMilliseconds = 3'600'000;

std::uint32_t slotOf(const ScenarioReader& reader, const Fleet& fleet) {
  const std::uint32_t slot = reader.number("slot", 1, kMostSlot);
  if (fleet.blade(slot) == nullptr) {
    reader.fail("there is no blade in slot " + std::to_string(slot));
  }
  return slot;
}

/// The slots of the request, all of which have blades; without the key, the slots of all blades.
std::vector<std::uint32_t> slotsOf(const ScenarioReader& reader, const Fleet& fleet) {
  if (!reader.has("slots")) {
    return fleet.slots();
  }
  std::vector<std::uint32_t> slots = reader.slots();
  for (const std::uint32_t slot : slots) {
    if (fleet.blade(slot) == nullptr) {
      reader.fail("there is no blade in slot " + std::to_string(slot));
    }
  }
  return slots;
}

Json setFault(const ScenarioReader& reader, Fleet& fleet) {
  std::set<std::string> keys = commandFaultKeys();
  keys.insert({"do", "slots"});
  reader.allowOnly(keys);
  const CommandFault fault = readCommandFault(reader);
  const auto slots = slotsOf(reader, fleet);
  for (const std::uint32_t slot : slots) {
    fleet.addFault(slot, fault);
  }
  return {{"blades", slots.size()}};
}

Json clearFaults(const ScenarioReader& reader, Fleet& fleet) {
  reader.allowOnly({"do", "slots"});
  const auto slots = slotsOf(reader, fleet);
  for (const std::uint32_t slot : slots) {
    fleet.clearFaults(slot);
  }
  return {{"blades", slots.size()}};
}

Json kill(const ScenarioReader& reader, Fleet& fleet) {
  reader.allowOnly({"do", "slot", "lastsMs"});
  const std::uint32_t slot = slotOf(reader, fleet);
  fleet.die(slot, BladeAgent::Duration(reader.number("lastsMs", 0, kMostMilliseconds)));
  return Json::object();
}

Json tellState(const ScenarioReader& reader, Fleet& fleet) {
  reader.allowOnly({"do", "slot"});
  const BladeAgent& blade = *fleet.blade(slotOf(reader, fleet));
  Json state = toldJson(blade);
  state["slot"] = blade.slot();
  state["state"] = stateName(blade.state());
  state["dead"] = blade.isDead(BladeAgent::Clock::now());
  state["hasToken"] = !blade.token().empty();
  state["instances"] = instancesJson(blade);
  return state;
}

Json doRequest(const ScenarioReader& reader, Fleet& fleet) {
  if (!reader.value().is_object()) {
    reader.fail("an object is needed here");
  }
  const std::string what = reader.word("do", {"fault", "clear", "die", "state"});
  if (what == "fault") {
    return setFault(reader, fleet);
  }
  if (what == "clear") {
    return clearFaults(reader, fleet);
  }
  return what == "die" ? kill(reader, fleet) : tellState(reader, fleet);
}

}  // namespace

std::string controlError(const std::string& cause) {
  return toLine({{"ok", false}, {"error", cause}});
}

std::string answerControl(Fleet& fleet, const std::string& request) {
  try {
    const Json document = Json::parse(request);
    Json answer = doRequest(ScenarioReader("request", document), fleet);
    answer["ok"] = true;
    return toLine(answer);
  } catch (const std::runtime_error& error) {
    return controlError(error.what());
  } catch (const Json::exception& error) {
    return controlError(std::string("request: ") + error.what());
  }
}

}  // namespace sma
