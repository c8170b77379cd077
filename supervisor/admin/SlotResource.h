#pragma once

#include <cstdint>

#include "supervisor/admin/Message.h"

namespace supervisor::admin {

struct Context;

/// The number that the path's first {step} gives. Throws a ProblemError when it is none.
std::uint32_t slotStep(const Request& request);

/// Every slot and its blade, by number.
Response getSlots(const Context& context, const Request& request);

/// One slot: also what its blade reports of itself, its application instances with their faults,
/// and operations under way.
Response getSlot(const Context& context, const Request& request);

}  // namespace supervisor::admin
