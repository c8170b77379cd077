#include <algorithm>

#include "serviceOrchAG/svc/Vocabulary.h"
#include "sma/scenario/ScenarioReader.h"

namespace sma {
namespace {

using zan_serviceOrchAG::words;

constexpr unsigned kMostTimes = 100'000;
constexpr unsigned kMostSteps = 100;

ExpectedReply readExpected(const ScenarioReader& reader) {
  ExpectedReply expected;
  if (reader.value() == "no reply") {
    expected.none = true;
    return expected;
  }
  reader.allowOnly({"status", "message"});
  if (reader.has("status")) {
    expected.status = reader.number("status", 0, 999);
  }
  if (reader.has("message")) {
    expected.message = reader.string("message");
  }
  return expected;
}

Event readTimed(const ScenarioReader& reader, Happening what) {
  Event event;
  event.at = reader.seconds("at");
  event.what = std::move(what);
  if (reader.has("expect")) {
    event.expected = readExpected(reader.at("expect"));
  }
  return event;
}

AppRef readRef(const ScenarioReader& reader) {
  AppRef ref;
  if (reader.has("app") && reader.value()["app"].is_string()) {
    ref.id = reader.string("app");
  } else if (reader.has("app")) {
    ref.number = reader.number("app", 1, kMostTimes);
  }
  return ref;
}

RunOperation readOperation(const ScenarioReader& reader) {
  RunOperation run{readRef(reader), {}};
  if (reader.has("command")) {
    run.plan.command = reader.word("command", operationCommands());
  }
  if (reader.has("steps")) {
    run.plan.steps = reader.number("steps", 1, kMostSteps);
  }
  if (reader.has("every")) {
    run.plan.every = reader.seconds("every");
  }
  if (reader.has("ack")) {
    run.plan.ack = reader.boolean("ack");
  }
  if (reader.has("ends")) {
    run.plan.succeeds = reader.word("ends", {words().stateSucceeded, words().stateFailed}) ==
                        words().stateSucceeded;
  }
  if (reader.has("version")) {
    run.plan.version = reader.string("version");
  }
  return run;
}

std::string faultNames() {
  std::string names = "wrong-token, empty-token, silence, duplicate-beats";
  for (const OddRequest& odd : oddRequests()) {
    names += ", " + std::string(odd.name);
  }
  return names;
}

}  // namespace

Event readFault(const ScenarioReader& reader) {
  reader.allowOnly({"fault", "at", "for", "times", "early", "expect"});
  const std::string name = reader.string("fault");
  const auto lasts = reader.seconds("for");
  if (name == "wrong-token" || name == "empty-token") {
    return readTimed(reader, ChangeToken{name == "empty-token"});
  }
  if (name == "silence") {
    return readTimed(reader, Silence{lasts});
  }
  if (name == "duplicate-beats") {
    return readTimed(reader, DuplicateBeats{lasts});
  }
  const OddRequest* odd = oddRequestByName(name);
  if (odd == nullptr) {
    reader.fail("unknown fault '" + name + "'; known are " + faultNames());
  }
  const unsigned times = reader.has("times") ? reader.number("times", 1, kMostTimes) : 1;
  return readTimed(reader, SendOdd{odd, times, reader.has("early") && reader.boolean("early")});
}

Event readAction(const ScenarioReader& reader) {
  const std::string action = reader.word("action", {"report", "app-failure", "progress"});
  if (action == "report") {
    reader.allowOnly({"action", "at", "expect"});
    return readTimed(reader, SendReport{});
  }
  if (action == "app-failure") {
    reader.allowOnly({"action", "at", "expect", "app", "for"});
    return readTimed(reader, FailApp{readRef(reader), reader.seconds("for")});
  }
  reader.allowOnly(
      {"action", "at", "expect", "app", "command", "steps", "every", "ack", "ends", "version"});
  return readTimed(reader, readOperation(reader));
}

std::pair<AppRef, AppChange> readApp(const ScenarioReader& reader) {
  reader.allowOnly({"app", "version", "state", "admin", "external", "hotfixes", "installed"});
  if (!reader.has("app")) {
    reader.fail("an 'app' is needed: a number or an id");
  }
  AppChange change;
  if (reader.has("version")) {
    change.version = reader.string("version");
  }
  if (reader.has("state")) {
    change.running =
        reader.word("state", {words().stateRunning, words().stateStopped}) == words().stateRunning;
  }
  if (reader.has("admin")) {
    change.enabled = reader.word("admin", {"enable", "disable"}) == "enable";
  }
  if (reader.has("external")) {
    change.external = reader.boolean("external");
  }
  if (reader.has("hotfixes")) {
    change.hotfixes = reader.string("hotfixes");
  }
  if (reader.has("installed")) {
    change.installed = reader.boolean("installed");
  }
  return {readRef(reader), change};
}

}  // namespace sma
