#include "framework/base/SvcConfigParams.h"

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "framework/base/ConfigKeys.h"
#include "framework/base/TextFile.h"

#define TOML_EXCEPTIONS 0
#define TOML_UNRELEASED_FEATURES 0
#include <toml++/toml.h>

namespace base {
namespace {

using Loaded = tl::expected<ConfigValues, std::string>;

// A value of the file, under its full name.
struct Entry {
  std::string name;
  const toml::node* node;

  unsigned line() const { return node->source().begin.line; }
};

// A key as one would write it, so that a quoted one with a point in it is not taken for two.
std::string written(std::string_view key) {
  const bool isBare = !key.empty() && std::all_of(key.begin(), key.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-';
  });
  return isBare ? std::string(key) : '"' + std::string(key) + '"';
}

// A table without entries counts as one itself, so that an unknown one is noticed.
void collect(const toml::table& table, const std::string& prefix, std::vector<Entry>& entries) {
  for (const auto& [key, node] : table) {
    const std::string name = prefix + written(key.str());
    const toml::table* const inner = node.as_table();
    if (inner != nullptr && !inner->empty()) {
      collect(*inner, name + '.', entries);
    } else {
      entries.push_back({name, &node});
    }
  }
}

bool isKnownTable(std::string_view name) {
  const std::string prefix = std::string(name) + '.';
  const auto keys = configKeys();
  return std::any_of(keys.begin(), keys.end(),
                     [&](const ConfigKey& key) { return key.name.starts_with(prefix); });
}

std::string unknownKey(std::string_view name) {
  std::string text = "unknown key " + quoted(name);
  if (const ConfigKey* const nearest = nearestConfigKey(name)) {
    text += "; did you mean " + quoted(nearest->name) + '?';
  }
  return text;
}

std::string_view kindOf(const toml::node& node) {
  switch (node.type()) {
    case toml::node_type::table:
      return "a table";
    case toml::node_type::array:
      return "a list";
    case toml::node_type::boolean:
      return "a truth value";
    case toml::node_type::floating_point:
      return "a number with a fraction";
    default:
      return "a date or time";
  }
}

ConfigOutcome applyEntry(ConfigValues& values, const Entry& entry) {
  const ConfigKey* const key = findConfigKey(entry.name);
  if (key == nullptr) {
    if (entry.node->is_table() && isKnownTable(entry.name)) {
      return {};
    }
    return tl::unexpected(unknownKey(entry.name));
  }
  if (const toml::value<std::int64_t>* const number = entry.node->as_integer()) {
    return setNumber(values, *key, number->get());
  }
  if (const toml::value<std::string>* const text = entry.node->as_string()) {
    return std::holds_alternative<NumberRule>(key->rule)
               ? tl::unexpected(refusal(*key, quoted(text->get())))
               : setText(values, *key, text->get());
  }
  return tl::unexpected(refusal(*key, kindOf(*entry.node)));
}

// `given` receives the names of the keys that were set.
ConfigOutcome applyText(ConfigValues& values, std::set<std::string>& given, std::string_view text,
                        const std::string& name) {
  const auto at = [&name](unsigned line) {
    return name + ':' + std::to_string(line) + ": ";
  };
  const toml::parse_result parsed = toml::parse(text);
  if (!parsed) {
    std::string cause(parsed.error().description());
    std::replace(cause.begin(), cause.end(), '\n', ' ');
    return tl::unexpected(at(parsed.error().source().begin.line) + cause);
  }
  std::vector<Entry> entries;
  collect(parsed.table(), "", entries);
  // The parser sorts by name; the first mistake to report is the topmost one.
  std::stable_sort(entries.begin(), entries.end(),
                   [](const Entry& a, const Entry& b) { return a.line() < b.line(); });
  for (const Entry& entry : entries) {
    if (const ConfigOutcome outcome = applyEntry(values, entry); !outcome) {
      return tl::unexpected(at(entry.line()) + outcome.error());
    }
    given.insert(entry.name);
  }
  return {};
}

ConfigOutcome applyOverride(ConfigValues& values, std::set<std::string>& given,
                            const std::string& text) {
  const auto failed = [&text](const std::string& cause) {
    return tl::unexpected("override " + quoted(text) + ": " + cause);
  };
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) {
    return failed("not of the form KEY=VALUE");
  }
  const std::string name = text.substr(0, equals);
  const ConfigKey* const key = findConfigKey(name);
  if (key == nullptr) {
    return failed(unknownKey(name));
  }
  if (const ConfigOutcome outcome = setFromText(values, *key, text.substr(equals + 1)); !outcome) {
    return failed(outcome.error());
  }
  given.insert(name);
  return {};
}

std::string_view hostOf(std::string_view address) {
  return address.substr(0, address.find(':'));
}

/// What values that are right one by one must be together.
ConfigOutcome checkTogether(const ConfigValues& values) {
  const std::string_view host = hostOf(values.appAgAddress);
  if (hostOf(values.appAgHeartbeatAddress) != host) {
    return tl::unexpected("'address.app_ag_heartbeat' must have the address of 'address.app_ag', " +
                          quoted(host) + ", not " + quoted(hostOf(values.appAgHeartbeatAddress)));
  }
  if (hostOf(values.appAgSecondAddress) == host) {
    return tl::unexpected(
        "'address.app_ag_second' must have another address than "
        "'address.app_ag', not " +
        quoted(host));
  }
  return {};
}

Loaded valuesOf(std::string_view text, const std::string& name,
                std::span<const std::string> overrides) {
  ConfigValues values;
  std::set<std::string> given;
  if (ConfigOutcome outcome = applyText(values, given, text, name); !outcome) {
    return tl::unexpected(std::move(outcome.error()));
  }
  for (const std::string& each : overrides) {
    if (ConfigOutcome outcome = applyOverride(values, given, each); !outcome) {
      return tl::unexpected(std::move(outcome.error()));
    }
  }
  for (const ConfigKey& key : configKeys()) {
    if (key.isRequired && !given.contains(std::string(key.name))) {
      return tl::unexpected(name + ": key " + quoted(key.name) + " is missing");
    }
  }
  if (const ConfigOutcome outcome = checkTogether(values); !outcome) {
    return tl::unexpected(name + ": " + outcome.error());
  }
  return values;
}

Loaded valuesOfFile(const std::string& path, std::span<const std::string> overrides) {
  auto text = readTextFile(path);
  if (!text) {
    return tl::unexpected(std::move(text.error()));
  }
  return valuesOf(*text, path, overrides);
}

}  // namespace

SvcConfigParams& SvcConfigParams::getInstance(bool) {
  static SvcConfigParams instance;
  return instance;
}

SvcConfigParams::Outcome SvcConfigParams::load(const std::string& path,
                                               std::span<const std::string> overrides) {
  return valuesOfFile(path, overrides).map([this](ConfigValues&& values) {
    values_ = std::move(values);
  });
}

SvcConfigParams::Outcome SvcConfigParams::loadText(std::string_view text, std::string_view name,
                                                   std::span<const std::string> overrides) {
  return valuesOf(text, std::string(name), overrides).map([this](ConfigValues&& values) {
    values_ = std::move(values);
  });
}

void SvcConfigParams::reset() {
  values_ = ConfigValues();
}

tl::expected<int, std::string> SvcConfigParams::rereadLogLevel(
    const std::string& path, std::span<const std::string> overrides) {
  return valuesOfFile(path, overrides).map([](const ConfigValues& values) {
    return static_cast<int>(values.logLevel);
  });
}

std::string SvcConfigParams::help() {
  return explainConfigKeys();
}

}  // namespace base
