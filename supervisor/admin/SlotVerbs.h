#pragma once

#include "supervisor/admin/Message.h"
#include "supervisor/admin/Reply.h"

namespace supervisor::admin {

struct Context;

// What can be ordered of a slot's blade. Each answers as place() in Order.h.
void formatSlot(const Context& context, const Request& request, const Reply& reply);
void clearSlotLogs(const Context& context, const Request& request, const Reply& reply);
void deregisterSlot(const Context& context, const Request& request, const Reply& reply);
/// The body has "level" besides the times.
void setSlotLogLevel(const Context& context, const Request& request, const Reply& reply);

}  // namespace supervisor::admin
