#pragma once

#include <cstdint>
#include <optional>

#include "dme/apps/AppCatalog.h"
#include "dme/blades/BladeMonitor.h"
#include "dme/chassis/Chassis.h"
#include "dme/jobs/JobConsequences.h"
#include "dme/jobs/JobFsm.h"
#include "dme/jobs/JobNote.h"
#include "dme/running/GatewayCalls.h"
#include "dme/running/JobClock.h"
#include "dme/running/JobLedger.h"
#include "dme/running/JobTimers.h"
#include "dme/running/JobTurns.h"
#include "dme/store/ObjectStore.h"

namespace dme {

/// Moves jobs from state to state by JobFsm's table: at their turn, by what happens to them, and as
/// time passes.
///
/// A command is handed to the gateway by the completion of the transaction that says so, so that
/// it is durable that the blade may have been told.
///
/// Not thread-safe: its owner holds one lock for it and the store.
class JobRunner {
 public:
  using TimePoint = JobClock::TimePoint;

  /// Everything outlives this.
  JobRunner(ObjectStore& store, Chassis& chassis, AppCatalog& catalog, BladeMonitor& monitor,
            const JobClock& clock, GatewayCalls& gateway, JobLedger& ledger);

  /// Takes the ledger's jobs up where an earlier run of the engine left them. Call once; what
  /// follows from it goes with the owner's next transaction.
  void restart();

  /// A job was made: times its delivery.
  void accepted(Job& job);
  /// The making of the job is durable, and it may be sent.
  void confirmed(std::uint64_t id);
  /// The operator gives the job, which is accepted or unknown, up: the job as it is once that is
  /// stored. Until cancelled() tells of it, nothing else happens to the job.
  JobView cancel(Job& job);
  /// Giving the job up was stored, and it is over; or it was not, and the job goes on.
  void cancelled(std::uint64_t id, bool isStored);
  /// The job was never there.
  void withdraw(std::uint64_t id);
  /// Why an accepted job has to wait.
  JobNote waiting(const JobView& job) const { return turns_.waiting(job); }

  /// This has happened to the job: the job as it is then, which is staged; nothing when that
  /// changes nothing. The reference may have ended.
  std::optional<JobView> apply(Job& job, JobEvent event, JobNote note = {});
  /// A gateway has connected, to which no blade has registered yet.
  void gatewayConnected() { turns_.gatewayConnected(); }
  /// The slot's blade has registered: notes what it is, and ends the pauses of jobs that could not
  /// be delivered.
  void bladeRegistered(std::uint32_t slot);
  /// The gateway takes reports of the slot's blade: it knows it.
  void bladeHeard(std::uint32_t slot) { turns_.bladeHeard(slot, JobClock::now()); }

  std::optional<TimePoint> deadline() const { return timers_.first(); }
  /// Ends what is past its time and lets jobs take their turns.
  void tick(TimePoint now);

 private:
  void enter(Job& job, JobState from);
  void expire(Job& job, TimePoint now);
  void send(Job& job);
  void notSent(std::uint64_t id, const base::Buffer& cookie, bool isStored);
  JobTable& table() { return ledger_.table(); }

  const JobClock& clock_;
  GatewayCalls& gateway_;
  JobLedger& ledger_;
  JobConsequences consequences_;
  JobTurns turns_;
  JobTimers timers_;
};

}  // namespace dme
