#include "sma/scenario/Scenario.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>

#include "sma/scenario/ScenarioReader.h"

namespace sma {
namespace {

using Json = nlohmann::json;

void readCommands(const ScenarioReader& reader, BladeScript& script) {
  reader.allowOnly({"time", "jitter", "fail_chance"});
  if (reader.has("time")) {
    script.commandTime = reader.seconds("time");
  }
  if (reader.has("jitter")) {
    script.commandJitter = reader.share("jitter");
  }
  if (reader.has("fail_chance")) {
    script.commandFailChance = reader.share("fail_chance");
  }
}

BladeScript readScript(const ScenarioReader& reader) {
  reader.allowOnly({"slots", "token", "apps", "faults", "actions", "commands", "command_faults"});
  BladeScript script;
  script.slots = reader.slots();
  if (reader.has("token")) {
    script.token = reader.string("token");
  }
  for (const ScenarioReader& app : reader.list("apps")) {
    script.apps.push_back(readApp(app));
  }
  for (const ScenarioReader& fault : reader.list("faults")) {
    script.events.push_back(readFault(fault));
  }
  for (const ScenarioReader& action : reader.list("actions")) {
    script.events.push_back(readAction(action));
  }
  if (reader.has("commands")) {
    readCommands(reader.at("commands"), script);
  }
  for (const ScenarioReader& fault : reader.list("command_faults")) {
    fault.allowOnly(commandFaultKeys());
    script.commandFaults.push_back(readCommandFault(fault));
  }
  return script;
}

BladeAgent::State readState(const ScenarioReader& reader) {
  const std::string name = reader.string("state");
  for (const auto state : {BladeAgent::State::Unregistered, BladeAgent::State::Registered,
                           BladeAgent::State::Refused}) {
    if (name == stateName(state)) {
      return state;
    }
  }
  reader.fail("unknown state '" + name + "'; known are unregistered, registered, refused");
}

std::map<unsigned, Span> readStatuses(const ScenarioReader& reader, const char* key) {
  std::map<unsigned, Span> statuses;
  for (const auto& [code, value] : reader.object(key)) {
    if (code.empty() || code.size() > 9 ||
        code.find_first_not_of("0123456789") != std::string::npos) {
      reader.fail("'" + code + "' is no status code");
    }
    statuses[static_cast<unsigned>(std::stoul(code))] = value.span();
  }
  return statuses;
}

Expectation readExpectation(const ScenarioReader& reader) {
  reader.allowOnly({"slots", "state", "has_token", "counts", "executed", "statuses", "replies"});
  Expectation expectation;
  expectation.slots = reader.slots();
  if (reader.has("state")) {
    expectation.state = readState(reader);
  }
  if (reader.has("has_token")) {
    expectation.hasToken = reader.boolean("has_token");
  }
  for (const auto& [name, value] : reader.object("counts")) {
    if (!countByName({}, name)) {
      reader.fail("unknown count '" + name + "'");
    }
    expectation.counts[name] = value.span();
  }
  const auto commands = commandNames();
  for (const auto& [name, value] : reader.object("executed")) {
    if (std::find(commands.begin(), commands.end(), name) == commands.end()) {
      reader.fail("unknown command '" + name + "'");
    }
    expectation.executed[name] = value.span();
  }
  expectation.statuses = readStatuses(reader, "statuses");
  for (const auto& [name, unused] : reader.object("replies")) {
    const auto kind = kindByName(name);
    if (!kind) {
      reader.fail("unknown kind of request '" + name + "'");
    }
    expectation.replies[*kind] = readStatuses(reader.at("replies"), name.c_str());
  }
  return expectation;
}

std::string slotText(std::uint32_t slot) {
  return "slot " + std::to_string(slot) + ": ";
}

void judge(const std::string& what, const std::map<unsigned, Span>& expected,
           const Statuses& statuses, std::vector<std::string>& failures) {
  for (const auto& [code, span] : expected) {
    const auto found = statuses.find(code);
    const std::uint64_t count = found == statuses.end() ? 0 : found->second;
    if (!span.holds(count)) {
      failures.push_back(what + " " + std::to_string(code) + " are " + std::to_string(count) +
                         ", expected " + span.text());
    }
  }
}

void judge(const Expectation& expectation, const BladeAgent& blade,
           std::vector<std::string>& failures) {
  const std::string slot = slotText(blade.slot());
  if (expectation.state && *expectation.state != blade.state()) {
    failures.push_back(slot + "is " + stateName(blade.state()) + ", expected " +
                       stateName(*expectation.state));
  }
  if (expectation.hasToken && *expectation.hasToken == blade.token().empty()) {
    failures.push_back(slot + (blade.token().empty() ? "holds no token, expected one"
                                                     : "holds a token, expected none"));
  }
  for (const auto& [name, span] : expectation.counts) {
    const std::uint64_t count = countByName(blade.counts(), name).value_or(0);
    if (!span.holds(count)) {
      failures.push_back(slot + name + " is " + std::to_string(count) + ", expected " +
                         span.text());
    }
  }
  for (const auto& [name, span] : expectation.executed) {
    const std::uint64_t count = blade.desk().executed(name);
    if (!span.holds(count)) {
      failures.push_back(slot + "executed ");
      failures.back().append(name).append(" is ").append(std::to_string(count));
      failures.back().append(", expected ").append(span.text());
    }
  }
  judge(slot + "replies", expectation.statuses, blade.counts().statuses(), failures);
  for (const auto& [kind, spans] : expectation.replies) {
    const std::string_view name = kKindNames[static_cast<std::size_t>(kind)].name;
    judge(slot + "replies to " + std::string(name), spans, blade.counts().of(kind).statuses,
          failures);
  }
}

}  // namespace

std::string Span::text() const {
  constexpr auto kNoLimit = std::numeric_limits<std::uint64_t>::max();
  if (least == most) {
    return std::to_string(least);
  }
  if (most == kNoLimit) {
    return "at least " + std::to_string(least);
  }
  if (least == 0) {
    return "at most " + std::to_string(most);
  }
  return std::to_string(least) + " to " + std::to_string(most);
}

Scenario Scenario::load(const std::string& path) {
  std::ifstream file(path);
  if (!file) {
    throw std::runtime_error(path + ": cannot be read");
  }
  std::ostringstream text;
  text << file.rdbuf();
  return parse(text.str(), path);
}

Scenario Scenario::parse(const std::string& text, const std::string& name) {
  Json document;
  const ScenarioReader reader(name, document);
  try {
    document = Json::parse(text, nullptr, true, true);
    reader.allowOnly({"blades", "expect"});
    Scenario scenario;
    for (const ScenarioReader& blade : reader.list("blades")) {
      scenario.blades.push_back(readScript(blade));
    }
    for (const ScenarioReader& expectation : reader.list("expect")) {
      scenario.expectations.push_back(readExpectation(expectation));
    }
    return scenario;
  } catch (const Json::exception& error) {
    reader.fail(error.what());
  }
}

void Scenario::apply(BladeAgent::Settings& settings) const {
  for (const BladeScript& script : blades) {
    if (!std::binary_search(script.slots.begin(), script.slots.end(), settings.slot)) {
      continue;
    }
    if (script.token) {
      settings.membership.token = *script.token;
    }
    for (const auto& [ref, change] : script.apps) {
      settings.appChanges.push_back(change);
      settings.appChanges.back().id = ref.in(settings.slot);
    }
    settings.commands.time = script.commandTime.value_or(settings.commands.time);
    settings.commands.jitter = script.commandJitter.value_or(settings.commands.jitter);
    settings.commands.failChance = script.commandFailChance.value_or(settings.commands.failChance);
    settings.commands.faults.insert(settings.commands.faults.end(), script.commandFaults.begin(),
                                    script.commandFaults.end());
    settings.events.insert(settings.events.end(), script.events.begin(), script.events.end());
  }
}

std::vector<std::string> Scenario::failures(const std::vector<const BladeAgent*>& agents) const {
  std::map<std::uint32_t, const BladeAgent*> bySlot;
  for (const BladeAgent* blade : agents) {
    bySlot[blade->slot()] = blade;
  }
  std::vector<std::string> failures;
  for (const BladeAgent* blade : agents) {
    for (const std::string& each : blade->disappointments()) {
      failures.push_back(slotText(blade->slot()) + each);
    }
  }
  for (const Expectation& expectation : expectations) {
    for (const std::uint32_t slot : expectation.slots) {
      const auto found = bySlot.find(slot);
      if (found == bySlot.end()) {
        failures.push_back(slotText(slot) + "is expected something of, but not simulated");
        continue;
      }
      judge(expectation, *found->second, failures);
    }
  }
  return failures;
}

}  // namespace sma
