#pragma once

#include <cstddef>
#include <cstdint>

#include "dme/base/Result.h"
#include "dme/chassis/Chassis.h"
#include "dme/reports/Report.h"
#include "dme/store/ObjectStore.h"
#include "framework/method/Config.h"

namespace dme {

/// Keeps each blade's last report of its platform: below its slot a monitor, and below that a disk
/// for each file system in the order of the report, "disk-1" being the first.
///
/// Not thread-safe. Changes are staged in the store, for one transaction.
class PlatformReports {
 public:
  static constexpr std::size_t kMostDisks = 64;

  /// Everything outlives this.
  PlatformReports(ObjectStore& store, Chassis& chassis, ReportCounters& counters)
      : store_(store), chassis_(chassis), counters_(counters) {}

  /// Puts the report in the place of the one before: what it lacks is gone. Fails, changing
  /// nothing, when there is no such slot or `monitor` is no monitor. `now` is in milliseconds
  /// since the epoch.
  Result<void> record(std::uint32_t slot, const method::Config& monitor,
                      const method::ConfigSet& disks, std::uint64_t now);

 private:
  ObjectStore& store_;
  Chassis& chassis_;
  ReportCounters& counters_;
};

}  // namespace dme
