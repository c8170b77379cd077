#include "sma/Scenario.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <stdexcept>

#include "sma/SlotRange.h"

namespace sma {
namespace {

using nlohmann::json;

/// A reader that knows where in the file it is, for its messages.
class Reader {
 public:
  Reader(std::string name, std::string place) : name_(std::move(name)), place_(std::move(place)) {}

  Reader at(const std::string& step) const { return {name_, place_ + step}; }

  [[noreturn]] void fail(const std::string& cause) const {
    throw std::runtime_error(name_ + ": " + (place_.empty() ? "" : place_ + ": ") + cause);
  }

  void allowOnly(const json& object, const std::set<std::string>& keys) const {
    if (!object.is_object()) {
      fail("an object is needed here");
    }
    for (const auto& item : object.items()) {
      if (!keys.contains(item.key())) {
        fail("unknown key '" + item.key() + "'; known are " + joined(keys));
      }
    }
  }

  /// The list at `key`, or an empty one. The result lives as long as `object`.
  const json& list(const json& object, const char* key) const {
    static const json kNone = json::array();
    return member(object, key, kNone, json::value_t::array, "is no list");
  }

  /// The object at `key`, or an empty one. The result lives as long as `object`.
  const json& object(const json& object, const char* key) const {
    static const json kNone = json::object();
    return member(object, key, kNone, json::value_t::object, "is no object");
  }

  std::vector<std::uint32_t> slots(const json& object) const {
    const std::string text = string(object, "slots");
    try {
      return parseSlotRange(text);
    } catch (const std::invalid_argument& error) {
      fail(error.what());
    }
  }

  std::string string(const json& object, const char* key) const {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string()) {
      fail("a text '" + std::string(key) + "' is needed");
    }
    return found->get<std::string>();
  }

  std::chrono::milliseconds seconds(const json& object, const char* key) const {
    const auto found = object.find(key);
    if (found == object.end()) {
      return std::chrono::milliseconds(0);
    }
    if (!found->is_number() || found->get<double>() < 0 || found->get<double>() > 1e6) {
      fail("'" + std::string(key) + "' is no number of seconds");
    }
    return std::chrono::milliseconds(static_cast<std::int64_t>(found->get<double>() * 1000));
  }

  Span span(const json& value) const {
    if (value.is_number_unsigned()) {
      const auto exact = value.get<std::uint64_t>();
      return {exact, exact};
    }
    allowOnly(value, {"min", "max"});
    Span span;
    span.least = value.value("min", span.least);
    span.most = value.value("max", span.most);
    return span;
  }

 private:
  const json& member(const json& object, const char* key, const json& none, json::value_t type,
                     const char* complaint) const {
    const auto found = object.find(key);
    if (found == object.end()) {
      return none;
    }
    if (found->type() != type) {
      fail("'" + std::string(key) + "' " + complaint);
    }
    return *found;
  }

  static std::string joined(const std::set<std::string>& keys) {
    std::string text;
    for (const std::string& key : keys) {
      text += (text.empty() ? "" : ", ") + key;
    }
    return text;
  }

  std::string name_;
  std::string place_;
};

FaultEvent readFault(const json& value, const Reader& reader) {
  reader.allowOnly(value, {"fault", "at", "for", "times"});
  FaultEvent event;
  const std::string name = reader.string(value, "fault");
  const auto fault = faultByName(name);
  if (!fault) {
    std::string known;
    for (const std::string_view each : faultNames()) {
      known += (known.empty() ? "" : ", ") + std::string(each);
    }
    reader.fail("unknown fault '" + name + "'; known are " + known);
  }
  event.fault = *fault;
  event.at = reader.seconds(value, "at");
  event.lasts = reader.seconds(value, "for");
  event.times = value.value("times", 1U);
  return event;
}

BladeScript readScript(const json& value, const Reader& reader) {
  reader.allowOnly(value, {"slots", "token", "faults"});
  BladeScript script;
  script.slots = reader.slots(value);
  if (value.contains("token")) {
    script.token = reader.string(value, "token");
  }
  std::size_t index = 0;
  for (const json& fault : reader.list(value, "faults")) {
    script.faults.push_back(
        readFault(fault, reader.at(".faults[" + std::to_string(index++) + "]")));
  }
  return script;
}

BladeAgent::State readState(const std::string& name, const Reader& reader) {
  for (const auto state : {BladeAgent::State::Unregistered, BladeAgent::State::Registered,
                           BladeAgent::State::Refused}) {
    if (name == stateName(state)) {
      return state;
    }
  }
  reader.fail("unknown state '" + name + "'; known are unregistered, registered, refused");
}

Expectation readExpectation(const json& value, const Reader& reader) {
  reader.allowOnly(value, {"slots", "state", "has_token", "counts", "statuses"});
  Expectation expectation;
  expectation.slots = reader.slots(value);
  if (value.contains("state")) {
    expectation.state = readState(reader.string(value, "state"), reader);
  }
  if (value.contains("has_token")) {
    if (!value["has_token"].is_boolean()) {
      reader.fail("'has_token' is neither true nor false");
    }
    expectation.hasToken = value["has_token"].get<bool>();
  }
  for (const auto& [name, span] : reader.object(value, "counts").items()) {
    if (!countByName({}, name)) {
      reader.fail("unknown count '" + name + "'");
    }
    expectation.counts[name] = reader.at(".counts." + name).span(span);
  }
  for (const auto& [code, span] : reader.object(value, "statuses").items()) {
    if (code.empty() || code.size() > 9 ||
        code.find_first_not_of("0123456789") != std::string::npos) {
      reader.fail("'" + code + "' is no status code");
    }
    expectation.statuses[static_cast<unsigned>(std::stoul(code))] =
        reader.at(".statuses." + code).span(span);
  }
  return expectation;
}

std::string slotText(std::uint32_t slot) {
  return "slot " + std::to_string(slot) + ": ";
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
  for (const auto& [code, span] : expectation.statuses) {
    const auto found = blade.counts().statuses.find(code);
    const std::uint64_t count = found == blade.counts().statuses.end() ? 0 : found->second;
    if (!span.holds(count)) {
      failures.push_back(slot + "replies " + std::to_string(code) + " are " +
                         std::to_string(count) + ", expected " + span.text());
    }
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
  const Reader reader(name, "");
  json document;
  try {
    document = json::parse(text, nullptr, true, true);
    reader.allowOnly(document, {"blades", "expect"});
    Scenario scenario;
    std::size_t index = 0;
    for (const json& value : reader.list(document, "blades")) {
      scenario.blades.push_back(
          readScript(value, reader.at("blades[" + std::to_string(index++) + "]")));
    }
    index = 0;
    for (const json& value : reader.list(document, "expect")) {
      scenario.expectations.push_back(
          readExpectation(value, reader.at("expect[" + std::to_string(index++) + "]")));
    }
    return scenario;
  } catch (const json::exception& error) {
    reader.fail(error.what());
  }
}

void Scenario::apply(BladeAgent::Settings& settings) const {
  for (const BladeScript& script : blades) {
    if (!std::binary_search(script.slots.begin(), script.slots.end(), settings.slot)) {
      continue;
    }
    if (script.token) {
      settings.token = *script.token;
    }
    settings.faults.insert(settings.faults.end(), script.faults.begin(), script.faults.end());
  }
}

std::vector<std::string> Scenario::failures(const std::vector<const BladeAgent*>& agents) const {
  std::map<std::uint32_t, const BladeAgent*> bySlot;
  for (const BladeAgent* blade : agents) {
    bySlot[blade->slot()] = blade;
  }
  std::vector<std::string> failures;
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
