#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "dme/jobs/JobFsm.h"

namespace dme {

/// What can be done to an application instance or a slot.
enum class JobVerb : std::uint8_t {
  kInstall,
  kUninstall,
  kUpgrade,
  kStart,
  kStop,
  kClearAppLogs,
  kLogLevel,
  kFormatDisk,
  kClearSystemLogs,
  kTimeZone,
  kDeregister
};

/// Their words, by their numbers: what people read and the database keeps.
inline constexpr std::array<std::string_view, 11> kJobVerbNames{
    "install",  "uninstall",  "upgrade",         "start",    "stop",      "clearAppLogs",
    "logLevel", "formatDisk", "clearSystemLogs", "timeZone", "deregister"};
constexpr std::string_view nameOf(JobVerb verb) {
  return kJobVerbNames[static_cast<std::size_t>(verb)];
}
/// Whether the verb's target is an application instance; else it is a slot.
constexpr bool isForApp(JobVerb verb) {
  return verb <= JobVerb::kClearAppLogs;
}

/// Why a job is in its state, as a word that programs can rely on.
enum class JobReason : std::uint8_t {
  kNone,           ///< goes without saying
  kWaitsForBlade,  ///< accepted: no blade that takes the command is there
  kWaitsForTurn,   ///< accepted: other commands are under way
  kNotDelivered,   ///< accepted: the gateway sent nothing; it is tried again
  kRefused,        ///< failed: the gateway refused the command before it was sent, or the blade did
  kFailedOnBlade,  ///< failed: the blade says so
  kSeenUndone,     ///< failed: a report of the blade shows that it was not done
  kDeliverByPast,  ///< failed: it could not be delivered in time, and the blade was never told
  kCancelled,      ///< failed: the operator gave it up
  kAnswerLost,     ///< unknown: the blade may have been told
  kRestarted,      ///< unknown: the engine ended while the command was with the gateway
  kFinishByPast,   ///< unknown: no end was reported in time
  kSeenDone        ///< succeeded: a report of the blade shows that it was done
};
inline constexpr std::array<std::string_view, 13> kJobReasonNames{
    "",           "waitsForBlade", "waitsForTurn", "notDelivered", "refused",   "failedOnBlade",
    "seenUndone", "deliverByPast", "cancelled",    "answerLost",   "restarted", "finishByPast",
    "seenDone"};
constexpr std::string_view nameOf(JobReason reason) {
  return kJobReasonNames[static_cast<std::size_t>(reason)];
}

/// What an operator wants done.
struct JobOrder {
  JobVerb verb = JobVerb::kInstall;
  std::uint32_t slot = 0;   ///< the target of a slot's verb
  std::string app;          ///< the identifier of the instance, of an instance's verb
  std::string level;        ///< of kLogLevel: debug, info, warning, error or critical
  std::string packageFile;  ///< of kUpgrade: where the blade fetches the new package
  std::string version;      ///< of kUpgrade: its version; empty when it is not known
  /// From now; not given, the verb's own.
  std::optional<std::chrono::milliseconds> deliverWithin;
  std::optional<std::chrono::milliseconds> finishWithin;
};

/// A job as people see it: nothing shows that a crash could take back. Times are in milliseconds
/// since the epoch, UTC; 0 for one that has not come.
struct JobView {
  std::uint64_t id = 0;
  JobVerb verb = JobVerb::kInstall;
  std::string target;  ///< the name of the object
  std::uint32_t slot = 0;
  std::string app;       ///< empty for a slot's verb
  std::string argument;  ///< the level, the package or the zone; empty for none
  JobState state = JobState::kAccepted;
  JobReason reason = JobReason::kNone;
  std::string cause;       ///< the reason as a sentence, with what the blade or gateway says
  std::uint32_t code = 0;  ///< the gateway's or the blade's result code where it failed; else 0
  std::uint32_t percentage = 0;
  std::uint32_t attempts = 0;  ///< how often the command was given to the gateway
  std::uint64_t acceptedAt = 0;
  std::uint64_t sentAt = 0;  ///< of the last attempt
  std::uint64_t acknowledgedAt = 0;
  std::uint64_t finishedAt = 0;
  std::uint64_t deliverBy = 0;
  std::uint64_t finishBy = 0;
  std::uint64_t revision = 0;  ///< grows with each change, also across restarts
};

/// Which jobs to show: those that meet all that is given, the latest first.
struct JobFilter {
  std::optional<std::uint32_t> slot;
  std::optional<std::string> app;
  std::vector<JobState> states;         ///< any for none
  std::optional<std::uint64_t> before;  ///< jobs of lower numbers
  std::size_t most = 100;
};

}  // namespace dme
