#pragma once

namespace supervisor {

inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;  ///< could not start or run
inline constexpr int kExitUsage = 2;   ///< wrong command line or configuration

}  // namespace supervisor
