#pragma once

#include <chrono>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "sma/agent/Event.h"
#include "sma/scenario/Scenario.h"
#include "sma/tasks/CommandFault.h"

namespace sma {

/// A JSON value of a scenario that knows where in the file it stands. Whatever is asked of it and
/// does not hold ends in fail().
class ScenarioReader {
 public:
  using Json = nlohmann::json;

  /// `name` stands for the file in messages. The value must outlive the reader.
  ScenarioReader(std::string name, const Json& value) : name_(std::move(name)), value_(&value) {}

  /// Throws std::runtime_error with one line that names the file, the place and the cause.
  [[noreturn]] void fail(const std::string& cause) const;

  const Json& value() const { return *value_; }
  /// The value must be an object that has no other keys.
  void allowOnly(const std::set<std::string>& keys) const;
  bool has(const char* key) const { return value_->contains(key); }

  /// The members of the list at `key`; none when there is no such key.
  std::vector<ScenarioReader> list(const char* key) const;
  /// The values of the object at `key` by their own keys; none when there is no such key.
  std::vector<std::pair<std::string, ScenarioReader>> object(const char* key) const;
  /// What stands at a key that is there.
  ScenarioReader at(const char* key) const;

  // --- what stands at a key

  std::string string(const char* key) const;
  /// One of the words, which are named in the message.
  std::string word(const char* key, const std::vector<std::string>& words) const;
  bool boolean(const char* key) const;
  unsigned number(const char* key, unsigned least, unsigned most) const;
  double share(const char* key) const;                       ///< from 0 to 1
  std::chrono::milliseconds seconds(const char* key) const;  ///< 0 without that key
  std::vector<std::uint32_t> slots() const;                  ///< at "slots"

  /// The value as a count or as an object with "min" and "max".
  Span span() const;

 private:
  ScenarioReader step(const std::string& step, const Json& value) const;

  std::string name_;
  std::string place_;
  const Json* value_;
};

/// Pieces of a scenario, each from its JSON value.
Event readFault(const ScenarioReader& reader);
Event readAction(const ScenarioReader& reader);
/// An instance that differs from the usual: which, and in what.
std::pair<AppRef, AppChange> readApp(const ScenarioReader& reader);

/// An object with "kind" and any of "times", "command", "delayMs", "lastsMs", "code" and "moment"
/// ("reply" or "work"). Other keys are the caller's to refuse.
CommandFault readCommandFault(const ScenarioReader& reader);
/// The keys that readCommandFault() knows.
const std::set<std::string>& commandFaultKeys();

}  // namespace sma
