#pragma once

#include "supervisor/admin/Message.h"

namespace supervisor::admin {

struct Context;

/// Every slot and its blade, by number.
Response getSlots(const Context& context, const Request& request);

/// One slot: also what its blade reports of itself, its application instances with their faults,
/// and operations under way.
Response getSlot(const Context& context, const Request& request);

}  // namespace supervisor::admin
