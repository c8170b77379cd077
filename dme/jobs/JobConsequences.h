#pragma once

#include <cstdint>
#include <optional>

#include "dme/apps/AppCatalog.h"
#include "dme/blades/BladeMonitor.h"
#include "dme/chassis/Chassis.h"
#include "dme/jobs/JobFsm.h"
#include "dme/jobs/JobTable.h"

namespace dme {

/// What becomes of the target when a job ends or nobody knows how it went.
///
/// Not thread-safe. Changes are staged in the store, for the job's transaction.
class JobConsequences {
 public:
  /// Everything outlives this.
  JobConsequences(ObjectStore& store, Chassis& chassis, AppCatalog& catalog, BladeMonitor& monitor)
      : store_(store), chassis_(chassis), catalog_(catalog), monitor_(monitor) {}

  /// The job has just left the state `from` because of `event`.
  void follow(const Job& job, JobState from, JobEvent event);

 private:
  void followApp(const Job& job, JobState from, JobEvent event);
  void followSlot(const Job& job);
  void formatted(std::uint32_t slot);

  ObjectStore& store_;
  Chassis& chassis_;
  AppCatalog& catalog_;
  BladeMonitor& monitor_;
};

/// How far an instance is after its job has left the state `from` because of `event`; nothing when
/// that changes nothing.
std::optional<AppPhase> phaseAfter(const Job& job, JobState from, JobEvent event);

}  // namespace dme
