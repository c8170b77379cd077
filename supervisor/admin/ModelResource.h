#pragma once

#include "supervisor/admin/Message.h"
#include "supervisor/admin/Problem.h"

namespace supervisor::admin {

struct Context;

/// The object tree, or with ?dn=NAME the object of this name and those below it.
Response getModel(const Context& context, const Request& request);

/// There is no object of this name.
Problem unknownObject(const std::string& dn);

}  // namespace supervisor::admin
