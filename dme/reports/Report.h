#pragma once

#include <cstddef>
#include <cstdint>

#include "framework/method/Config.h"
#include "framework/mo/Mo.h"

namespace dme {

/// What of the blades' reports was not taken as it came. Each count is of single things, not of
/// reports.
struct ReportCounters {
  std::uint64_t refused = 0;           ///< reports that were answered with a failure
  std::uint64_t surplusDisks = 0;      ///< beyond PlatformReports::kMostDisks
  std::uint64_t surplusInstances = 0;  ///< beyond AppInstances::kMostInstances
  std::uint64_t unfitObjects = 0;      ///< of another class than belongs there
  std::uint64_t unfitInstances = 0;    ///< without an identifier, with one too long or used before
  std::uint64_t unfitValues = 0;       ///< of an unknown property, of another kind, or not a number
  std::uint64_t cutTexts = 0;          ///< longer than the engine keeps

  bool operator==(const ReportCounters&) const = default;
};

/// Of hot fixes, of which there is a list. Any other longer text is cut to kMostTextBytes.
inline constexpr std::size_t kMostHotfixesBytes = 4096;

/// Sets on `object` what a blade says of it, within the bounds of texts. False, leaving it as it
/// is, when `config` is of another class. What was left out is counted.
bool takeReport(const method::Config& config, mo::Mo& object, ReportCounters& counters);

}  // namespace dme
