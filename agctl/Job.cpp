#include "agctl/Job.h"

#include <algorithm>

#include "agctl/Times.h"
#include "dme/jobs/JobView.h"

namespace agctl {
namespace {

using dme::JobReason;
using dme::JobState;

bool isState(const std::string& word, JobState state) {
  return word == dme::nameOf(state);
}
bool isReason(const std::string& word, JobReason reason) {
  return word == dme::nameOf(reason);
}

}  // namespace

Outcome<Job> Job::read(const Json& document) {
  const auto id = numberOf(document, "id");
  Job job{id.value_or(0),
          numberOf(document, "revision").value_or(0),
          textOf(document, "verb"),
          "",
          textOf(document, "state"),
          textOf(document, "reason"),
          textOf(document, "cause"),
          std::min<std::uint64_t>(numberOf(document, "percentage").value_or(0), 100),
          document};
  if (!id || !dme::jobStateNamed(job.state)) {
    return tl::unexpected(Failure{ExitCode::kOther,
                                  "the supervisor's answer is no job",
                                  "install agctl and zedd from one release",
                                  {}});
  }
  const std::string app = textOf(document, "app");
  job.target = app.empty() ? "slot " + numberTextOf(document, "slot") : "app " + app;
  return job;
}

bool Job::isOpen() const {
  return isState(state, JobState::kAccepted) || isState(state, JobState::kSending) ||
         isState(state, JobState::kRunning);
}

std::string Job::subject() const {
  return "job " + std::to_string(id) + " (" + verb + " of " + target + ")";
}

std::string Job::progress() const {
  std::string text = state;
  if (isState(state, JobState::kRunning)) {
    text += ", " + std::to_string(percentage) + " %";
  }
  return reason.empty() ? text : text + ", " + reason;
}

ExitCode exitCodeOf(const Job& job) {
  if (isState(job.state, JobState::kSucceeded)) {
    return ExitCode::kDone;
  }
  if (isState(job.state, JobState::kFailed)) {
    if (isReason(job.reason, JobReason::kDeliverByPast)) {
      return ExitCode::kBladeOffline;
    }
    return isReason(job.reason, JobReason::kCancelled) ? ExitCode::kOther
                                                       : ExitCode::kFailedOnBlade;
  }
  const bool isUndelivered =
      isState(job.state, JobState::kAccepted) && (isReason(job.reason, JobReason::kWaitsForBlade) ||
                                                  isReason(job.reason, JobReason::kNotDelivered));
  return isUndelivered ? ExitCode::kBladeOffline : ExitCode::kUnknownOutcome;
}

std::string remedyOf(const Job& job) {
  switch (exitCodeOf(job)) {
    case ExitCode::kBladeOffline:
      return "look whether the blade is there: agctl slot list";
    case ExitCode::kFailedOnBlade:
      return "see what the blade says: agctl job show " + std::to_string(job.id);
    case ExitCode::kUnknownOutcome:
      return "look before you order it again, a report of the blade may settle it: agctl job "
             "show " +
             std::to_string(job.id);
    default:
      return "";
  }
}

Tone toneOf(const Job& job) {
  if (isState(job.state, JobState::kSucceeded)) {
    return Tone::kGood;
  }
  if (isState(job.state, JobState::kFailed)) {
    return Tone::kBad;
  }
  return isState(job.state, JobState::kUnknown) ? Tone::kUnsure : Tone::kPlain;
}

Table jobTable(const std::vector<Job>& jobs) {
  Table table({{"JOB", Table::Kind::kNumber},
               {"VERB"},
               {"SLOT", Table::Kind::kNumber},
               {"APP"},
               {"ARGUMENT", Table::Kind::kLong},
               {"STATE"},
               {"%", Table::Kind::kNumber},
               {"REASON"},
               {"ACCEPTED"},
               {"CAUSE", Table::Kind::kLong}});
  for (const Job& job : jobs) {
    const Json& document = job.document;
    table.add({job.id == 0 ? "" : std::to_string(job.id),
               job.verb,
               numberTextOf(document, "slot"),
               textOf(document, "app"),
               textOf(document, "argument"),
               {job.state, toneOf(job)},
               std::to_string(job.percentage),
               job.reason,
               timeText(numberOf(document, "acceptedAt").value_or(0)),
               job.cause});
  }
  return table;
}

Outcome<std::vector<Job>> readJobs(const Json& list) {
  std::vector<Job> jobs;
  for (const Json& each : list) {
    auto job = Job::read(each);
    if (!job) {
      return tl::unexpected(std::move(job.error()));
    }
    jobs.push_back(std::move(*job));
  }
  return jobs;
}

}  // namespace agctl
