#pragma once

#include <cstdint>
#include <string>

#include "dme/chassis/AppPhase.h"

namespace dme {

/// An application instance as people see it. Its parts, such as links and resources, are objects
/// below `dn`.
struct AppView {
  std::string id;
  std::string dn;
  std::uint32_t slot = 0;
  AppPhase phase = AppPhase::kAssumed;
  std::string version;      ///< that is meant to be there; empty for any
  std::string packageFile;  ///< where the blade fetches it; empty when it is not known
  bool isFailed = false;    ///< the blade reported a failure since its last start
  std::uint64_t job = 0;    ///< the one that is not over; 0 for none
};

}  // namespace dme
