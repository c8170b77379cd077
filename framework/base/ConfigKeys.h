#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <variant>

#include "framework/base/ConfigValues.h"

// The keys of the configuration: their names, values and meaning. The one table behind reading,
// overriding, checking and explaining them.
namespace base {

struct NumberRule {
  std::int64_t ConfigValues::*member;
  std::int64_t first;
  std::int64_t last;
  // What the number counts, in the plural; may be empty.
  std::string_view unit;
};

struct ChoiceRule {
  std::string ConfigValues::*member;
  std::span<const std::string_view> choices;
};

struct TextRule {
  std::string ConfigValues::*member;
  bool (*isAccepted)(std::string_view);
  // What isAccepted accepts, with its article: "a path".
  std::string_view form;
};

struct ConfigKey {
  std::string_view name;
  std::variant<NumberRule, ChoiceRule, TextRule> rule;
  bool isRequired;
  std::string_view help;
};

// In the order in which they are explained.
std::span<const ConfigKey> configKeys() noexcept;
// Null when there is none of that name.
const ConfigKey* findConfigKey(std::string_view name) noexcept;
// The key that the writer of an unknown one most likely meant, or null when none is near.
const ConfigKey* nearestConfigKey(std::string_view name);

// Store a value after checking it. The error is a phrase that names the key, what it may be
// and what it was; the values are then unchanged.
using ConfigOutcome = tl::expected<void, std::string>;
ConfigOutcome setNumber(ConfigValues& values, const ConfigKey& key, std::int64_t value);
ConfigOutcome setText(ConfigValues& values, const ConfigKey& key, std::string_view value);
// A value as text, which becomes a number if the key takes one.
ConfigOutcome setFromText(ConfigValues& values, const ConfigKey& key, std::string_view text);
// The phrase for a value that is neither a number nor a text; `kind` names it: "a list".
std::string refusal(const ConfigKey& key, std::string_view kind);

// Every key with its meaning, its possible values and its default, as lines for a terminal.
std::string explainConfigKeys();

// In single quotes, with control characters as \xNN, so that it stays on one line.
std::string quoted(std::string_view text);

}  // namespace base
