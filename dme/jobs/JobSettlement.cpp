#include "dme/jobs/JobSettlement.h"

#include "model/sm/AppInstanceMo.h"

namespace dme {

namespace {

std::optional<bool> isUpgradeSeen(const Job& job, const Object* reported) {
  if (reported == nullptr) {
    return false;
  }
  const base::String& installed = reported->get(sm::AppInstanceMo::kInstalledVersion);
  if (job.version.empty() || installed.empty()) {
    return std::nullopt;
  }
  return installed.str() == job.version;
}

}  // namespace

std::optional<AppPhase> phaseSeen(const Object* reported) {
  if (reported == nullptr) {
    return AppPhase::kAbsent;
  }
  switch (reported->get(sm::AppInstanceMo::kState)) {
    case sm::kAppActive:
      return AppPhase::kStarted;
    case sm::kAppInactive:
      return AppPhase::kStopped;
    default:
      return std::nullopt;
  }
}

std::optional<bool> isSeenDone(const Job& job, const Object* reported) {
  switch (job.view.verb) {
    case JobVerb::kInstall:
      return reported != nullptr;
    case JobVerb::kUninstall:
      return reported == nullptr;
    case JobVerb::kUpgrade:
      return isUpgradeSeen(job, reported);
    case JobVerb::kStart:
    case JobVerb::kStop: {
      const AppPhase wanted =
          job.view.verb == JobVerb::kStart ? AppPhase::kStarted : AppPhase::kStopped;
      const std::optional<AppPhase> seen = phaseSeen(reported);
      return seen ? std::optional(*seen == wanted) : std::nullopt;
    }
    default:
      return std::nullopt;
  }
}

}  // namespace dme
