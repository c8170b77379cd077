#include "dme/running/JobListener.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "dme/base/Text.h"
#include "dme/jobs/JobSettlement.h"
#include "model/sd/AppInstanceMo.h"
#include "model/sd/SlotMo.h"

namespace dme {

namespace {

/// The gateway's code for a command whose outcome it does not tell apart.
constexpr std::uint32_t kMixedCode = 1003;
constexpr std::size_t kMostSaidBytes = 200;

JobEvent eventOf(JobVerb verb, const proc::Stimulus::Failure* failure) {
  if (failure == nullptr) {
    return isDoneWithReply(verb) ? JobEvent::kDone : JobEvent::kTaken;
  }
  return !isUnsentToldApart(verb) && failure->code == kMixedCode
             ? JobEvent::kAnswerLost
             : eventOfStageFailure(failure->code);
}

JobReason reasonOf(JobEvent event, JobState state) {
  switch (event) {
    case JobEvent::kNotDelivered:
      return reasonOfUndelivered(state);
    case JobEvent::kRefused:
      return JobReason::kRefused;
    case JobEvent::kAnswerLost:
      return JobReason::kAnswerLost;
    default:
      return JobReason::kNone;
  }
}

std::string said(const char* who, std::string_view text, std::uint32_t code) {
  return std::string(who) + " says " + oneLine(text, kMostSaidBytes) + " (" + std::to_string(code) +
         ")";
}

/// The verb of the commands that blades report under this word; nothing when no job's are.
std::optional<JobVerb> verbReportedAs(std::string_view command) {
  static constexpr std::pair<std::string_view, JobVerb> kVerbs[] = {
      {"installApp", JobVerb::kInstall}, {"uninstallApp", JobVerb::kUninstall},
      {"upgradeApp", JobVerb::kUpgrade}, {"startApp", JobVerb::kStart},
      {"stopApp", JobVerb::kStop},       {"formatDisk", JobVerb::kFormatDisk}};
  const auto* const found = std::find_if(std::begin(kVerbs), std::end(kVerbs),
                                         [&](const auto& row) { return row.first == command; });
  return found != std::end(kVerbs) ? std::optional(found->second) : std::nullopt;
}

}  // namespace

// ----- What the gateway tells ---------------------------------------------------------------

void JobListener::heard(PeerId peer, const proc::Address& from) {
  if (gateway_.heard(peer, from)) {
    runner_.gatewayConnected();
  }
}

bool JobListener::answered(const base::Buffer& cookie, const proc::Stimulus::Failure* failure) {
  const std::optional<std::uint64_t> id = gateway_.jobOf(cookie);
  Job* const job = id ? table().find(*id) : nullptr;
  if (job == nullptr) {
    return false;
  }
  gateway_.forget(*job);
  const JobEvent event = eventOf(job->view.verb, failure);
  JobNote note{reasonOf(event, job->view.state), "", 0};
  if (failure != nullptr) {
    note.cause = said("the gateway", failure->text.view(), failure->code);
    note.code = failure->code;
    if (event == JobEvent::kAnswerLost && failure->code == kMixedCode) {
      note.cause += ", as it does also when the blade was told and did not answer";
    }
  }
  if (runner_.apply(*job, event, std::move(note))) {
    ledger_.commit();
  }
  return true;
}

// ----- What the blades tell -------------------------------------------------------------------

void JobListener::progressed(const Object& subject, const OperationReport& report) {
  const std::optional<JobVerb> verb = verbReportedAs(report.command);
  if (!verb) {
    return;
  }
  const std::uint32_t slot =
      subject.is<sd::SlotMo>() ? subject.get(sd::SlotMo::kNumber) : catalog_.slotOf(subject);
  for (const std::uint64_t id : table().ofSlot(slot)) {
    Job& job = *table().find(id);
    if (job.view.verb == *verb && job.view.target == subject.dn().text().str()) {
      progress(job, report);
      return;
    }
  }
}

void JobListener::progress(Job& job, const OperationReport& report) {
  JobEvent event = JobEvent::kProgress;
  JobNote note;
  if (report.status == "succeeded") {
    event = JobEvent::kEndedWell;
  } else if (report.status == "failed") {
    const std::uint32_t code = report.code.value_or(0);
    event = JobEvent::kEndedBadly;
    note = {JobReason::kFailedOnBlade, said("the blade", report.errorText.view(), code), code};
  }
  const std::uint32_t before = job.view.percentage;
  if (job.view.state != JobState::kAccepted) {
    job.view.percentage = std::max(before, report.percentage.value_or(0));
  }
  const bool saysNothing = event == JobEvent::kProgress && job.view.state == JobState::kRunning &&
                           job.view.percentage == before;
  if (!saysNothing && runner_.apply(job, event, std::move(note))) {
    ledger_.commit();
  }
}

void JobListener::instancesReported(std::uint32_t slot) {
  runner_.bladeHeard(slot);
  for (const std::uint64_t id : table().ofSlot(slot)) {
    Job& job = *table().find(id);
    if (job.view.state == JobState::kUnknown) {
      settle(job);
    }
  }
  learnPhases(slot);
  ledger_.commitChanges();
}

void JobListener::settle(Job& job) {
  const std::optional<bool> isDone =
      isSeenDone(job, instances_.reported(job.view.slot, job.view.app));
  // One report may have waited for its turn since before the command; the blade sends the next one
  // when that was answered.
  const bool wasSeenDone = std::exchange(job.wasSeenDone, isDone == true);
  if (isDone == true) {
    job.undoneSince.reset();
    if (wasSeenDone) {
      runner_.apply(job, JobEvent::kSeenDone,
                    {JobReason::kSeenDone, "a report of the blade shows that it was done"});
    }
    return;
  }
  // The time counts from the first report: until then the blade may have stood still, and have the
  // command still before it.
  const JobClock::TimePoint now = JobClock::now();
  if (isDone == false && now - job.undoneSince.value_or(now) >= settleAfter_) {
    runner_.apply(job, JobEvent::kSeenUndone,
                  {JobReason::kSeenUndone, "a report of the blade shows that it was not done"});
  } else if (isDone == false) {
    job.undoneSince = job.undoneSince.value_or(now);
  }
}

void JobListener::learnPhases(std::uint32_t slot) {
  for (Object* const instance : catalog_.all(slot)) {
    if (AppCatalog::phaseOf(*instance) != AppPhase::kUnsure) {
      continue;
    }
    const std::string& id = instance->get(sd::AppInstanceMo::kAppInstanceId).str();
    const std::optional<AppPhase> seen = phaseSeen(instances_.reported(slot, id));
    if (seen && table().openJobOf(slot, id, JobVerb::kStop) == nullptr) {
      catalog_.setPhase(*instance, *seen);
    }
  }
}

void JobListener::registered(std::uint32_t slot, bool isValid) {
  runner_.bladeRegistered(slot);
  for (const std::uint64_t id : table().ofSlot(slot)) {
    Job& job = *table().find(id);
    // A blade that was valid before registers as such whether its disk was formatted or not.
    if (isValid && job.wasForeign && job.view.verb == JobVerb::kFormatDisk &&
        job.view.state == JobState::kUnknown) {
      runner_.apply(job, JobEvent::kSeenDone,
                    {JobReason::kSeenDone, "the blade has registered and is valid"});
    }
  }
  ledger_.commitChanges();
}

}  // namespace dme
