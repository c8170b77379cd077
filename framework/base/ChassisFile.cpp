#include "framework/base/ChassisFile.h"

#include <algorithm>
#include <optional>
#include <set>

#include "framework/base/TextFile.h"

#define TOML_EXCEPTIONS 0
#define TOML_UNRELEASED_FEATURES 0
#include <toml++/toml.h>

namespace base {
namespace {

constexpr std::size_t kMaxTextBytes = 255;
constexpr std::int64_t kHighestChassis = 255;

// A line of the file and what is wrong there.
struct Mistake {
  unsigned line;
  std::string cause;
};

using Found = std::optional<Mistake>;

std::string quoted(std::string_view key) {
  return "'" + std::string(key) + "'";
}

Found wrongAt(const toml::node& node, std::string cause) {
  return Mistake{static_cast<unsigned>(node.source().begin.line), std::move(cause)};
}

bool isPlainText(std::string_view text) {
  return text.size() <= kMaxTextBytes && std::none_of(text.begin(), text.end(), [](char c) {
           const auto byte = static_cast<unsigned char>(c);
           return byte < 0x20 || byte == 0x7f;
         });
}

// Both leave `target` when the key is not there.
Found readText(const toml::table& table, std::string_view key, std::string& target) {
  const toml::node* const node = table.get(key);
  if (node == nullptr) {
    return std::nullopt;
  }
  const std::optional<std::string_view> text = node->value_exact<std::string_view>();
  if (!text || !isPlainText(*text)) {
    return wrongAt(
        *node, quoted(key) + " must be a text of up to 255 bytes without control " + "characters");
  }
  target = *text;
  return std::nullopt;
}

Found readNumber(const toml::table& table, std::string_view key, std::int64_t last,
                 std::uint32_t& target) {
  const toml::node* const node = table.get(key);
  if (node == nullptr) {
    return std::nullopt;
  }
  const std::optional<std::int64_t> number = node->value_exact<std::int64_t>();
  if (!number || *number < 1 || *number > last) {
    return wrongAt(*node, quoted(key) + " must be a number from 1 to " + std::to_string(last));
  }
  target = static_cast<std::uint32_t>(*number);
  return std::nullopt;
}

Found refuseOtherKeys(const toml::table& table, std::initializer_list<std::string_view> known,
                      std::string_view place) {
  for (const auto& [key, node] : table) {
    if (std::find(known.begin(), known.end(), key.str()) == known.end()) {
      std::string names;
      for (const std::string_view name : known) {
        names += (names.empty() ? "" : ", ") + quoted(name);
      }
      return wrongAt(
          node, "unknown key " + quoted(key.str()) + "; " + std::string(place) + " has " + names);
    }
  }
  return std::nullopt;
}

Found readChassis(const toml::table& table, ChassisDescription& chassis) {
  if (Found found = refuseOtherKeys(table, {"id", "name", "model", "serial"}, "[chassis]")) {
    return found;
  }
  if (Found found = readNumber(table, "id", kHighestChassis, chassis.id)) {
    return found;
  }
  for (const auto& [key, target] :
       {std::pair{"name", &chassis.name}, {"model", &chassis.model}, {"serial", &chassis.serial}}) {
    if (Found found = readText(table, key, *target)) {
      return found;
    }
  }
  return std::nullopt;
}

Found readAppState(const toml::table& table, ChassisDescription::App& app) {
  const toml::node* const node = table.get("state");
  if (node == nullptr) {
    return std::nullopt;
  }
  const auto word = node->value_exact<std::string_view>();
  if (word == "started") {
    app.state = ChassisDescription::App::State::kStarted;
  } else if (word == "stopped") {
    app.state = ChassisDescription::App::State::kStopped;
  } else {
    return wrongAt(*node, "'state' must be \"started\" or \"stopped\"");
  }
  return std::nullopt;
}

Found readApp(const toml::table& table, ChassisDescription::App& app) {
  if (Found found = refuseOtherKeys(table, {"id", "version", "state"}, "an app")) {
    return found;
  }
  if (Found found = readText(table, "id", app.id)) {
    return found;
  }
  if (app.id.empty()) {
    return wrongAt(table, "an app has no 'id'");
  }
  if (Found found = readText(table, "version", app.version)) {
    return found;
  }
  return readAppState(table, app);
}

Found readApps(const toml::table& table, std::vector<ChassisDescription::App>& apps) {
  const toml::node* const node = table.get("apps");
  if (node == nullptr) {
    return std::nullopt;
  }
  const toml::array* const array = node->as_array();
  if (array == nullptr || array->size() > kMostAppsPerSlot) {
    return wrongAt(*node, "'apps' must be a list of up to " + std::to_string(kMostAppsPerSlot) +
                              " apps, each as {id = \"...\"}");
  }
  for (const toml::node& each : *array) {
    const toml::table* const app = each.as_table();
    if (app == nullptr) {
      return wrongAt(each, "an app must be given as {id = \"...\"}");
    }
    if (Found found = readApp(*app, apps.emplace_back())) {
      return found;
    }
  }
  return std::nullopt;
}

Found readSlot(const toml::table& table, ChassisDescription::Slot& slot) {
  if (Found found =
          refuseOtherKeys(table, {"number", "name", "serial", "model", "apps"}, "[[slot]]")) {
    return found;
  }
  if (!table.contains("number")) {
    return wrongAt(table, "a slot has no 'number'");
  }
  if (Found found = readNumber(table, "number", kHighestSlot, slot.number)) {
    return found;
  }
  for (const auto& [key, target] :
       {std::pair{"name", &slot.name}, {"serial", &slot.serial}, {"model", &slot.model}}) {
    if (Found found = readText(table, key, *target)) {
      return found;
    }
  }
  return readApps(table, slot.apps);
}

Found readSlots(const toml::node& node, ChassisDescription& chassis) {
  const toml::array* const array = node.as_array();
  if (array == nullptr || !array->is_array_of_tables()) {
    return wrongAt(node, "'slot' must be given as [[slot]], once for each slot");
  }
  std::set<std::uint32_t> numbers;
  std::set<std::string> apps;
  for (const toml::node& each : *array) {
    ChassisDescription::Slot slot;
    if (Found found = readSlot(*each.as_table(), slot)) {
      return found;
    }
    if (!numbers.insert(slot.number).second) {
      return wrongAt(each, "slot " + std::to_string(slot.number) + " is described twice");
    }
    for (const ChassisDescription::App& app : slot.apps) {
      if (!apps.insert(app.id).second) {
        return wrongAt(each, "app " + quoted(app.id) + " is described twice");
      }
    }
    chassis.slots.push_back(std::move(slot));
  }
  std::sort(chassis.slots.begin(), chassis.slots.end(),
            [](const auto& a, const auto& b) { return a.number < b.number; });
  return std::nullopt;
}

Found readRoot(const toml::table& root, ChassisDescription& chassis) {
  if (Found found = refuseOtherKeys(root, {"chassis", "slot"}, "the file")) {
    return found;
  }
  if (const toml::node* const node = root.get("chassis")) {
    const toml::table* const table = node->as_table();
    if (table == nullptr) {
      return wrongAt(*node, "'chassis' must be given as [chassis]");
    }
    if (Found found = readChassis(*table, chassis)) {
      return found;
    }
  }
  const toml::node* const slots = root.get("slot");
  return slots == nullptr ? Mistake{0, "no [[slot]] is described"} : readSlots(*slots, chassis);
}

}  // namespace

tl::expected<ChassisDescription, std::string> parseChassisText(std::string_view text,
                                                               const std::string& source) {
  const auto failed = [&source](const Mistake& mistake) {
    const std::string line = mistake.line == 0 ? "" : ":" + std::to_string(mistake.line);
    return tl::unexpected(source + line + ": " + mistake.cause);
  };
  const toml::parse_result parsed = toml::parse(text);
  if (!parsed) {
    std::string cause(parsed.error().description());
    std::replace(cause.begin(), cause.end(), '\n', ' ');
    return failed({static_cast<unsigned>(parsed.error().source().begin.line), cause});
  }
  ChassisDescription chassis;
  if (const Found found = readRoot(parsed.table(), chassis)) {
    return failed(*found);
  }
  return chassis;
}

tl::expected<ChassisDescription, std::string> readChassisFile(const std::string& path) {
  const auto text = readTextFile(path);
  if (!text) {
    return tl::unexpected(text.error());
  }
  return parseChassisText(*text, path);
}

}  // namespace base
