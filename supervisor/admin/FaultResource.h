#pragma once

#include "supervisor/admin/Message.h"

namespace supervisor::admin {

struct Context;

// Faults that are injected into the commands to blades. They belong to the process, not to the
// engine, and are gone when it ends.

/// The hooks that are known, and what is set at which.
Response getFaults(const Context& context, const Request& request);
/// Sets what happens at a hook, in the place of what is set there.
Response putFault(const Context& context, const Request& request);
/// Takes away what is set at one hook, or at all.
Response deleteFault(const Context& context, const Request& request);
Response deleteFaults(const Context& context, const Request& request);

}  // namespace supervisor::admin
