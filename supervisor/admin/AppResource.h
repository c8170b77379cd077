#pragma once

#include "supervisor/admin/Message.h"
#include "supervisor/admin/Reply.h"

namespace supervisor::admin {

struct Context;

/// Application instances by identifier; with ?slot=N those of one slot.
Response getApps(const Context& context, const Request& request);

/// One instance: also what the engine believes and the blade reports of it, and its "parts", the
/// description that makes another such.
Response getApp(const Context& context, const Request& request);

/// Makes the instance that the body describes. Nothing is done on the blade.
void postApp(const Context& context, const Request& request, const Reply& reply);

/// Forgets an instance that is not on its blade; ?dryRun=true.
void deleteApp(const Context& context, const Request& request, const Reply& reply);

}  // namespace supervisor::admin
