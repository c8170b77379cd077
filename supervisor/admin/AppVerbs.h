#pragma once

#include "supervisor/admin/Message.h"
#include "supervisor/admin/Reply.h"

namespace supervisor::admin {

struct Context;

// What can be ordered for an application instance. Each answers as place() in Order.h.
void installApp(const Context& context, const Request& request, const Reply& reply);
void uninstallApp(const Context& context, const Request& request, const Reply& reply);
void startApp(const Context& context, const Request& request, const Reply& reply);
void stopApp(const Context& context, const Request& request, const Reply& reply);
void clearAppLogs(const Context& context, const Request& request, const Reply& reply);
/// The body has "packageFile" and perhaps "version" besides the times.
void upgradeApp(const Context& context, const Request& request, const Reply& reply);

}  // namespace supervisor::admin
