#include <algorithm>
#include <iterator>

#include "sma/scenario/ScenarioReader.h"

namespace sma {
namespace {

constexpr unsigned kMostTimes = 100'000;
constexpr unsigned kMostMilliseconds = 3'600'000;
constexpr unsigned kMostCode = 999;
constexpr CommandFault::Duration kUsualDeath{1000};

FaultKind readKind(const ScenarioReader& reader) {
  std::vector<std::string> names;
  names.reserve(std::size(kFaultNames));
  for (const FaultName& each : kFaultNames) {
    names.emplace_back(each.name);
  }
  const std::string word = reader.word("kind", names);
  return std::find_if(kFaultNames.begin(), kFaultNames.end(),
                      [&word](const FaultName& each) { return each.name == word; })
      ->kind;
}

CommandFault::Duration readMilliseconds(const ScenarioReader& reader, const char* key) {
  return CommandFault::Duration(reader.number(key, 0, kMostMilliseconds));
}

}  // namespace

const std::set<std::string>& commandFaultKeys() {
  static const std::set<std::string> kKeys{"kind",    "times", "command", "delayMs",
                                           "lastsMs", "code",  "moment"};
  return kKeys;
}

CommandFault readCommandFault(const ScenarioReader& reader) {
  CommandFault fault;
  fault.kind = readKind(reader);
  if (reader.has("times")) {
    fault.times = reader.number("times", 0, kMostTimes);
  }
  if (reader.has("command")) {
    fault.command = reader.word("command", commandNames());
  }
  if (reader.has("delayMs")) {
    fault.delay = readMilliseconds(reader, "delayMs");
  }
  fault.lasts = fault.kind == FaultKind::Die ? kUsualDeath : fault.lasts;
  if (reader.has("lastsMs")) {
    fault.lasts = readMilliseconds(reader, "lastsMs");
  }
  if (reader.has("code")) {
    fault.code = reader.number("code", 1, kMostCode);
  }
  if (reader.has("moment")) {
    fault.beforeReply = reader.word("moment", {"reply", "work"}) == "reply";
  }
  return fault;
}

}  // namespace sma
