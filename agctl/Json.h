#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>

namespace agctl {

/// Keeps its members in the supervisor's order.
using Json = nlohmann::ordered_json;

/// The document, or one line that says what is wrong with the text. What nests deeper than 64
/// levels, or has more than 512 members in one object, is refused.
tl::expected<Json, std::string> readJson(std::string_view text);

/// One line of ASCII: whatever a text holds, a terminal shows it and does not obey it.
std::string render(const Json& json);

/// A member's value; what is missing or of another kind is as if it were not there.
std::string textOf(const Json& json, const char* name);
std::optional<std::uint64_t> numberOf(const Json& json, const char* name);
/// Its digits; empty without a number.
std::string numberTextOf(const Json& json, const char* name);
bool flagOf(const Json& json, const char* name);
/// The elements; an empty list when there is none of this name.
const Json& listOf(const Json& json, const char* name);
/// The object; an empty one when there is none of this name.
const Json& objectOf(const Json& json, const char* name);

/// A value as a person reads it: a text without quotes, nothing for null.
std::string plain(const Json& value);

}  // namespace agctl
