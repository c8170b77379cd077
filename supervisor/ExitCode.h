#pragma once

namespace supervisor {

inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;   ///< could not start or run
inline constexpr int kExitUsage = 2;    ///< wrong command line or configuration
inline constexpr int kExitUnknown = 3;  ///< there is no object of the name that was given

}  // namespace supervisor
