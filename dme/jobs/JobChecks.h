#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "dme/apps/AppCatalog.h"
#include "dme/base/Refusal.h"
#include "dme/chassis/Chassis.h"
#include "dme/chassis/TimeSetting.h"
#include "dme/jobs/JobTable.h"

namespace dme {

/// What commands need on this platform besides what all need.
struct CommandNeeds {
  bool bladeSerial = true;  ///< to start an instance
  bool dataVnics = true;    ///< to start an instance
};

/// Decides which orders become jobs: whether the target is there and in the right phase, whether
/// another job is in the way, and whether the command would be sent and taken.
///
/// Not thread-safe; changes nothing.
class JobChecks {
 public:
  /// Everything outlives this.
  JobChecks(ObjectStore& store, const Chassis& chassis, const AppCatalog& catalog,
            const TimeSetting& time, const JobTable& jobs, const CommandNeeds& needs)
      : store_(store),
        chassis_(chassis),
        catalog_(catalog),
        time_(time),
        jobs_(jobs),
        needs_(needs) {}

  /// Whether a job may wait for another one of its verb and target.
  enum class Queue : std::uint8_t { kNot, kBehindItsLike };

  /// The job that the order becomes, without a number. `now` is in milliseconds since the epoch.
  Granted<Job> plan(const JobOrder& order, std::uint64_t now, Queue queue = Queue::kNot) const;

  /// The first job that the one planned would have to wait for, or null.
  const Job* inTheWay(const JobView& planned, Queue queue) const;

 private:
  Granted<void> aim(const JobOrder& order, Job& job) const;
  Granted<void> aimAtApp(const JobOrder& order, Job& job) const;
  Granted<void> aimAtSlot(const JobOrder& order, Job& job) const;
  Granted<void> checkNeeds(const Object& instance, JobVerb verb) const;

  ObjectStore& store_;
  const Chassis& chassis_;
  const AppCatalog& catalog_;
  const TimeSetting& time_;
  const JobTable& jobs_;
  const CommandNeeds needs_;
};

/// What is said of a job that is in the way.
Refusal jobInTheWay(const JobView& job);

/// The words of a platform's log levels, by their numbers.
inline constexpr std::array<std::string_view, 5> kLogLevels{"debug", "info", "warning", "error",
                                                            "critical"};

}  // namespace dme
