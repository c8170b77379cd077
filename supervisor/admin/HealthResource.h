#pragma once

#include "supervisor/admin/Message.h"

namespace supervisor::admin {

struct Context;

/// How the supervisor is, with the number of jobs that are open: "ok", "starting" until blades can
/// connect, or "degraded" with the findings that make it so. The status is 503 while it starts,
/// else 200.
Response getHealth(const Context& context, const Request& request);

}  // namespace supervisor::admin
