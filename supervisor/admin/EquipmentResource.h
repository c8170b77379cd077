#pragma once

#include "supervisor/admin/Message.h"
#include "supervisor/admin/Reply.h"

namespace supervisor::admin {

struct Context;

// What people write on the chassis, and on a slot and its blade.
void patchChassis(const Context& context, const Request& request, const Reply& reply);
void patchSlot(const Context& context, const Request& request, const Reply& reply);

}  // namespace supervisor::admin
