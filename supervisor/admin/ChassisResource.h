#pragma once

#include "supervisor/admin/Message.h"

namespace supervisor::admin {

struct Context;

/// The chassis as a whole: identity, counts of slots and blades, and of what the engine did.
Response getChassis(const Context& context, const Request& request);

}  // namespace supervisor::admin
