#pragma once

#include <optional>

#include "dme/chassis/AppPhase.h"
#include "dme/jobs/JobTable.h"
#include "dme/store/ObjectStore.h"

namespace dme {

/// What a blade's report of its instances says of a job: that what was wanted is so (true), that it
/// is not (false), or neither. `reported` is null for an instance that the report lacks.
std::optional<bool> isSeenDone(const Job& job, const Object* reported);

/// The phase that a report shows; nothing when it does not tell the instance's state.
std::optional<AppPhase> phaseSeen(const Object* reported);

}  // namespace dme
