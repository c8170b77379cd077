#include "supervisor/admin/Fields.h"

#include <algorithm>
#include <utility>

#include "supervisor/admin/Problem.h"

namespace supervisor::admin {
namespace {

/// A value is quoted up to this length in bytes.
constexpr std::size_t kMostQuoted = 80;

/// The bytes that a character, or the escape that stands for one, has in JSON, by its first two.
std::size_t lengthOf(unsigned char first, char second) {
  if (first == '\\') {
    return second == 'u' ? 6 : 2;
  }
  return first < 0xc0 ? 1 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
}

/// Cuts what is too long, between two characters.
std::string shortened(const std::string& json) {
  if (json.size() <= kMostQuoted) {
    return json;
  }
  std::size_t end = 0;
  std::size_t next = 0;
  while (next <= kMostQuoted) {
    end = next;
    next += lengthOf(static_cast<unsigned char>(json[end]), json[end + 1]);
  }
  return json.substr(0, end) + "...";
}

std::string quoted(const Json& value) {
  if (value.is_object()) {
    return "an object";
  }
  if (value.is_array()) {
    return "a list";
  }
  return shortened(render(value));
}

bool isPrintable(const std::string& text) {
  return std::none_of(text.begin(), text.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
  });
}

Problem unknownField(const std::string& path, const std::set<std::string, std::less<>>& known) {
  std::string names;
  for (const std::string& name : known) {
    names += (names.empty() ? "" : ", ") + name;
  }
  return {400,
          "unknown-field",
          "The body has a member that is not known here",
          "'" + path + "' is not known",
          names.empty() ? "send an empty object or no body" : "known here are: " + names,
          0,
          path};
}

}  // namespace

void refuseValue(const Json& value, const std::string& path, const std::string& remedy) {
  throw ProblemError(
      badValue(path, path.empty() ? "it is " + quoted(value) : "'" + path + "' is " + quoted(value),
               remedy));
}

std::string textIn(const Json& value, const std::string& path) {
  if (!value.is_string()) {
    refuseValue(value, path, "give a text");
  }
  auto text = value.get<std::string>();
  if (text.size() > kMostTextBytes || !isPrintable(text)) {
    refuseValue(
        value, path,
        "give at most " + std::to_string(kMostTextBytes) + " bytes without control characters");
  }
  return text;
}

std::uint64_t numberIn(const Json& value, const std::string& path, std::uint64_t least,
                       std::uint64_t most) {
  if (value.is_number_unsigned()) {
    const auto number = value.get<std::uint64_t>();
    if (number >= least && number <= most) {
      return number;
    }
  }
  refuseValue(value, path,
              "give a whole number from " + std::to_string(least) + " to " + std::to_string(most));
}

bool flagIn(const Json& value, const std::string& path) {
  if (!value.is_boolean()) {
    refuseValue(value, path, "give true or false");
  }
  return value.get<bool>();
}

Fields::Fields(const Json& json, std::string path) : json_(&json), path_(std::move(path)) {
  if (!json.is_object()) {
    refuseValue(json, path_, "give an object");
  }
}

const Json* Fields::find(std::string_view name) {
  known_.emplace(name);
  const auto member = json_->find(std::string(name));
  return member == json_->end() ? nullptr : &*member;
}

std::string Fields::pathOf(std::string_view name) const {
  return path_.empty() ? std::string(name) : path_ + "." + std::string(name);
}

std::optional<std::string> Fields::text(std::string_view name) {
  const Json* const value = find(name);
  return value != nullptr ? std::optional(textIn(*value, pathOf(name))) : std::nullopt;
}

std::string Fields::requiredText(std::string_view name) {
  auto value = text(name);
  if (!value || value->empty()) {
    throw ProblemError(badValue(pathOf(name), "'" + pathOf(name) + "' is missing",
                                "give a text that is not empty"));
  }
  return std::move(*value);
}

std::optional<std::uint64_t> Fields::number(std::string_view name, std::uint64_t least,
                                            std::uint64_t most) {
  const Json* const value = find(name);
  return value != nullptr ? std::optional(numberIn(*value, pathOf(name), least, most))
                          : std::nullopt;
}

std::optional<Fields> Fields::object(std::string_view name) {
  const Json* const value = find(name);
  return value != nullptr ? std::optional<Fields>(std::in_place, *value, pathOf(name))
                          : std::nullopt;
}

std::vector<Fields> Fields::list(std::string_view name, std::size_t most) {
  std::vector<Fields> fields;
  const Json* const value = find(name);
  if (value == nullptr) {
    return fields;
  }
  if (!value->is_array() || value->size() > most) {
    refuseValue(*value, pathOf(name), "give a list of at most " + std::to_string(most));
  }
  for (const Json& each : *value) {
    fields.emplace_back(each, pathOf(name) + "[" + std::to_string(fields.size()) + "]");
  }
  return fields;
}

void Fields::end() const {
  for (const auto& [name, value] : json_->items()) {
    if (!known_.contains(name)) {
      throw ProblemError(unknownField(pathOf(name), known_));
    }
  }
}

}  // namespace supervisor::admin
