#pragma once

#include "supervisor/admin/Message.h"
#include "supervisor/admin/Reply.h"

namespace supervisor::admin {

struct Context;

/// Jobs, the latest first: ?slot=N, ?app=ID, ?state=WORD,..., ?before=ID, ?limit=N.
Response getJobs(const Context& context, const Request& request);

/// One job. With ?waitMs=N the answer comes when the job's revision is above ?revision=R, or
/// without R when it is final or its outcome unknown, or when the time is over.
void getJob(const Context& context, const Request& request, const Reply& reply);

/// Gives a job up that has not been sent or whose outcome nobody knows.
void cancelJob(const Context& context, const Request& request, const Reply& reply);

}  // namespace supervisor::admin
