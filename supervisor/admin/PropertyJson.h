#pragma once

#include <string>

#include "framework/method/Value.h"
#include "framework/mo/Property.h"
#include "supervisor/admin/Json.h"

// Values of properties as people write and read them in a description: enumerated ones by their
// texts, addresses that a class keeps as numbers in dotted or colon form. Kinds, names and texts
// come from the class's table; here stand only forms that it does not know. Which values make sense
// is for the engine to say.

namespace supervisor::admin {

/// The value that `json` at `path` gives the property. Throws a ProblemError that names the path
/// when it cannot be the property's.
method::Value readValue(const mo::PropertyInfo& property, const Json& json,
                        const std::string& path);

/// The other way round; a value of another kind as it is.
Json writeValue(const mo::PropertyInfo& property, const method::Value& value);

}  // namespace supervisor::admin
