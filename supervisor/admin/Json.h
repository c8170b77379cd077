#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "dme/store/ObjectView.h"
#include "framework/method/Config.h"
#include "supervisor/admin/Message.h"

namespace supervisor::admin {

/// Keeps its members in the order in which they were put in.
using Json = nlohmann::ordered_json;

/// Whole numbers stay exact, also beyond 2^53; fractions have the fewest digits that tell them
/// apart from their neighbours; what is no number becomes null.
Json toJson(const method::Value& value);

/// The set properties as members.
Json propertiesOf(const dme::ObjectView& object);

/// One line. Bytes that are no UTF-8 become U+FFFD: texts come from blades.
std::string render(const Json& json);

/// The model as people and programs read it: {"objects": [...]}, an object a line, each with "dn",
/// "class" and "properties", in the order given.
std::string renderModel(const std::vector<dme::ObjectView>& objects);

Response jsonResponse(const Json& json, unsigned status = 200);
Response noContent();

}  // namespace supervisor::admin
