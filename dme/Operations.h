#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "dme/AppInstances.h"
#include "dme/Chassis.h"
#include "dme/ObjectStore.h"
#include "dme/Report.h"
#include "dme/Result.h"
#include "framework/base/String.h"

namespace dme {

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

 private:
  /// What a report says of a run.
  struct Report {
    std::string_view command;
    std::string_view status;
    std::optional<std::uint32_t> percentage;
    std::optional<std::uint32_t> code;
    base::String errorText;
  };
  void note(const Object& subject, const Report& report, std::uint64_t now);

  ObjectStore& store_;
  Chassis& chassis_;
  AppInstances& instances_;
  ReportCounters& counters_;
};

}  // namespace dme
