#include "dme/jobs/JobConsequences.h"

#include <algorithm>
#include <array>

#include "dme/jobs/JobChecks.h"
#include "model/sd/SlotMo.h"

namespace dme {

namespace {

/// Codes with which the gateway refuses a command itself; the framework's for a call that it could
/// not carry out, and of an injected failure.
constexpr std::array<std::uint32_t, 5> kNeverSent{0, 1, 2, 3, 1003};

bool wasTold(const Job& job, JobState from, JobEvent event) {
  switch (event) {
    case JobEvent::kNotDelivered:
    case JobEvent::kDeliverByPast:
      return false;
    case JobEvent::kRefused:
      return std::find(kNeverSent.begin(), kNeverSent.end(), job.view.code) == kNeverSent.end();
    case JobEvent::kCancelled:
      return from != JobState::kAccepted;
    default:
      return true;
  }
}

AppPhase phaseOfSuccess(const Job& job) {
  switch (job.view.verb) {
    case JobVerb::kUninstall:
      return AppPhase::kAbsent;
    case JobVerb::kStart:
      return AppPhase::kStarted;
    case JobVerb::kUpgrade:
      return job.phaseBefore == AppPhase::kUnsure ? AppPhase::kStopped : job.phaseBefore;
    default:
      return AppPhase::kStopped;
  }
}

}  // namespace

std::optional<AppPhase> phaseAfter(const Job& job, JobState from, JobEvent event) {
  if (job.view.verb > JobVerb::kStop) {
    return std::nullopt;
  }
  switch (job.view.state) {
    case JobState::kSucceeded:
      return phaseOfSuccess(job);
    case JobState::kUnknown:
      return AppPhase::kUnsure;
    case JobState::kFailed:
      break;
    default:
      return std::nullopt;
  }
  // A blade that could not start or stop an instance may say so because it runs, or not, already.
  return wasTold(job, from, event) ? AppPhase::kUnsure : job.phaseBefore;
}

void JobConsequences::follow(const Job& job, JobState from, JobEvent event) {
  if (isForApp(job.view.verb)) {
    followApp(job, from, event);
  } else if (job.view.state == JobState::kSucceeded) {
    followSlot(job);
  }
}

void JobConsequences::followApp(const Job& job, JobState from, JobEvent event) {
  Object* const instance = catalog_.find(job.view.app);
  const std::optional<AppPhase> phase = phaseAfter(job, from, event);
  if (instance == nullptr || !phase) {
    return;
  }
  catalog_.setPhase(*instance, *phase);
  if (job.view.verb == JobVerb::kUpgrade && job.view.state == JobState::kSucceeded) {
    catalog_.setPackage(*instance, job.view.argument, job.version);
  }
}

void JobConsequences::followSlot(const Job& job) {
  Object* const slot = chassis_.slot(job.view.slot);
  if (slot == nullptr) {
    return;
  }
  if (job.view.verb == JobVerb::kDeregister) {
    store_.set(*slot, sd::SlotMo::kAdmission, static_cast<std::uint8_t>(sd::Admission::kNone));
    monitor_.dismiss(job.view.slot);
  } else if (job.view.verb == JobVerb::kLogLevel) {
    const auto* const level = std::find(kLogLevels.begin(), kLogLevels.end(), job.view.argument);
    store_.set(*slot, sd::SlotMo::kPlatformLogLevel,
               static_cast<std::uint8_t>(level - kLogLevels.begin()));
  } else if (job.view.verb == JobVerb::kFormatDisk) {
    formatted(job.view.slot);
  }
}

// What was installed has gone with the disk, unless the blade keeps it elsewhere: its next report
// tells.
void JobConsequences::formatted(std::uint32_t slot) {
  for (Object* const instance : catalog_.all(slot)) {
    const AppPhase phase = AppCatalog::phaseOf(*instance);
    if (phase == AppPhase::kStopped || phase == AppPhase::kStarted) {
      catalog_.setPhase(*instance, AppPhase::kUnsure);
    }
  }
}

}  // namespace dme
