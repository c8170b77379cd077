#pragma once

#include <chrono>
#include <cstdint>

#include "dme/apps/AppCatalog.h"
#include "dme/reports/AppInstances.h"
#include "dme/reports/BladeEvents.h"
#include "dme/reports/Operations.h"
#include "dme/running/GatewayCalls.h"
#include "dme/running/JobLedger.h"
#include "dme/running/JobRunner.h"

namespace dme {

/// Finds out what the gateway's answers and the blades' reports mean for which job.
///
/// Not thread-safe: its owner holds one lock for it and the store.
class JobListener final : public BladeEvents {
 public:
  /// Everything outlives this. An unknown job without progress for `settleAfter` may be seen not
  /// to have been done.
  JobListener(const AppInstances& instances, AppCatalog& catalog, GatewayCalls& gateway,
              JobLedger& ledger, JobRunner& runner, std::chrono::milliseconds settleAfter)
      : instances_(instances),
        catalog_(catalog),
        gateway_(gateway),
        ledger_(ledger),
        runner_(runner),
        settleAfter_(settleAfter) {}

  void heard(PeerId peer, const proc::Address& from) override;
  bool answered(const base::Buffer& cookie, const proc::Stimulus::Failure* failure) override;
  void progressed(const Object& subject, const OperationReport& report) override;
  void instancesReported(std::uint32_t slot) override;
  void registered(std::uint32_t slot, bool isValid) override;

 private:
  void progress(Job& job, const OperationReport& report);
  void settle(Job& job);
  void learnPhases(std::uint32_t slot);
  JobTable& table() { return ledger_.table(); }

  const AppInstances& instances_;
  AppCatalog& catalog_;
  GatewayCalls& gateway_;
  JobLedger& ledger_;
  JobRunner& runner_;
  const std::chrono::milliseconds settleAfter_;
};

}  // namespace dme
