#pragma once

#include "dme/jobs/JobView.h"
#include "supervisor/admin/Message.h"
#include "supervisor/admin/Reply.h"

namespace supervisor::admin {

class Fields;
struct Context;

/// Takes out of an order's body what only its verb has.
using ReadOwnValues = void (*)(Fields& fields, dme::JobOrder& order);

/// Completes the order from the request's body, in which every order may have "deliverWithinMs" and
/// "finishWithinMs". Gives it to the engine, or with ?dryRun=true asks what would come of it: 202
/// with the job, 200 with what would be, or the refusal. Throws as Fields does for a body that does
/// not fit.
void place(const Context& context, const Request& request, dme::JobOrder order, const Reply& reply,
           ReadOwnValues readOwnValues);

}  // namespace supervisor::admin
