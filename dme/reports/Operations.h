#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "dme/base/Result.h"
#include "dme/chassis/Chassis.h"
#include "dme/reports/AppInstances.h"
#include "dme/reports/Report.h"
#include "dme/store/ObjectStore.h"
#include "framework/base/String.h"

namespace dme {

class BladeEvents;

/// What a blade's report says of the run of a command.
struct OperationReport {
  std::string_view command;  ///< a constant word, such as "installApp"
  std::string_view status;   ///< "running", "succeeded" or "failed"
  std::optional<std::uint32_t> percentage;
  std::optional<std::uint32_t> code;  ///< the agent's own
  base::String errorText;
};

/// How far the commands to blades have come, by what the blades report: below an application
/// instance or a slot one "operation-<command>" for each command, which shows its last run. A run
/// begins with the first report after the one before has ended.
///
/// Not thread-safe. Changes are staged in the store, for one transaction. All functions fail,
/// changing nothing, when what is reported on is not there or a code is unknown; `now` is in
/// milliseconds since the epoch.
class Operations {
 public:
  /// Everything outlives this.
  Operations(ObjectStore& store, Chassis& chassis, AppInstances& instances,
             ReportCounters& counters)
      : store_(store), chassis_(chassis), instances_(instances), counters_(counters) {}

  /// A command to an application instance. `percentage` is a signed number in an unsigned
  /// argument, as agents report it; it is kept within 0 and 100.
  Result<void> noteProgress(const base::String& instance, std::uint8_t command,
                            std::uint32_t percentage, std::uint8_t status, std::uint32_t code,
                            const base::String& errorText, std::uint64_t now);
  /// The formatting of a blade's disk.
  Result<void> noteDiskFormat(std::uint32_t slot, std::uint8_t status, std::uint64_t now);
  /// The transfer of a platform image to a blade.
  Result<void> noteUpgrade(std::uint32_t slot, std::uint32_t percentage, std::uint8_t status,
                           std::uint64_t now);

  /// Tells what was noted from now on. Borrowed.
  void listen(BladeEvents& events) { events_ = &events; }

 private:
  void note(const Object& subject, const OperationReport& report, std::uint64_t now);

  ObjectStore& store_;
  Chassis& chassis_;
  AppInstances& instances_;
  ReportCounters& counters_;
  BladeEvents* events_ = nullptr;
};

}  // namespace dme
