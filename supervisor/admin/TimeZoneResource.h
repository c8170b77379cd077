#pragma once

#include "supervisor/admin/Message.h"
#include "supervisor/admin/Reply.h"

namespace supervisor::admin {

struct Context;

/// The chassis' time zone, by its name and as the blades are told.
Response getTimeZone(const Context& context, const Request& request);

/// Sets the zone, which every registered blade is told by a job.
void putTimeZone(const Context& context, const Request& request, const Reply& reply);

}  // namespace supervisor::admin
