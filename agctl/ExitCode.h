#pragma once

#include <algorithm>

namespace agctl {

/// The causes that scripts tell apart. Of several targets the highest counts.
enum class ExitCode : int {
  kDone = 0,
  kOther = 1,
  kUsage = 2,           ///< wrong command line, or the supervisor refuses a value
  kUnreachable = 3,     ///< no supervisor answers; nothing was changed
  kNotFound = 4,        ///< no such slot, application instance, job or hook
  kConflict = 5,        ///< not in this state, or another job is in the way
  kBladeOffline = 6,    ///< the command did not reach the blade
  kFailedOnBlade = 7,   ///< the blade failed or refused it
  kUnknownOutcome = 8,  ///< not over in time, or nobody knows how it went
};

constexpr ExitCode worse(ExitCode one, ExitCode other) {
  return std::max(one, other);
}

inline constexpr const char* kExitCodeHelp =
    "Exit: 0 done, 1 other failure, 2 wrong usage, 3 supervisor unreachable, 4 not found,\n"
    "      5 conflict, 6 blade offline, 7 failed on the blade, 8 timed out or outcome unknown;\n"
    "      of several targets the highest.";

}  // namespace agctl
