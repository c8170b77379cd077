#pragma once

#include <optional>

#include "dme/jobs/JobTable.h"
#include "dme/store/ObjectStore.h"
#include "model/sd/JobMo.h"

namespace dme {

/// What the database keeps of a job.
sd::JobMo recordOf(const Job& job);
/// The job of a record; nothing when its words or its number make no sense.
std::optional<Job> jobOf(const Object& record);

}  // namespace dme
