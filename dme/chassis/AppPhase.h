#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace dme {

/// How far an application instance has come, as the engine knows it from jobs and reports.
enum class AppPhase : std::uint8_t {
  kAssumed,  ///< described with the chassis: taken to be there, nothing done yet
  kAbsent,   ///< not installed
  kUnsure,   ///< a job failed halfway or nobody knows how it went: everything may be tried
  kStopped,
  kStarted
};

/// Their words, by their numbers: what people read and the database keeps.
inline constexpr std::array<std::string_view, 5> kAppPhaseNames{"assumed", "absent", "unsure",
                                                                "stopped", "started"};
constexpr std::string_view nameOf(AppPhase phase) {
  return kAppPhaseNames[static_cast<std::size_t>(phase)];
}

}  // namespace dme
