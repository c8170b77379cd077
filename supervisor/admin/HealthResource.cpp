#include "supervisor/admin/HealthResource.h"

#include <cstddef>
#include <string>
#include <utility>

#include "supervisor/admin/Context.h"
#include "supervisor/admin/EngineView.h"
#include "supervisor/admin/Json.h"

namespace supervisor::admin {
namespace {

Json finding(const std::string& text, const char* remedy) {
  return {{"text", text}, {"remedy", remedy}};
}

/// More than the engine keeps open.
constexpr std::size_t kMostJobs = 65'536;

/// Jobs that are not over.
struct OpenJobs {
  std::size_t open = 0;
  std::size_t unknown = 0;  ///< of them, those whose outcome nobody knows
};

OpenJobs openJobs(const EngineView& engine) {
  using dme::JobState;
  dme::JobFilter filter;
  filter.states = {JobState::kAccepted, JobState::kSending, JobState::kRunning, JobState::kUnknown};
  filter.most = kMostJobs;
  OpenJobs counts;
  for (const dme::JobView& job : engine.jobs(filter)) {
    ++counts.open;
    counts.unknown += job.state == JobState::kUnknown ? 1 : 0;
  }
  return counts;
}

Json findingsOf(const dme::EngineStatus& status, const OpenJobs& jobs) {
  Json findings = Json::array();
  if (status.commits.isBehind) {
    findings.push_back(finding("changes cannot be stored; orders and registrations are put off",
                               "see the cause in the log, e.g. a full disk, and remove it"));
  }
  if (status.areActionsHeld) {
    findings.push_back(finding("most blades fell silent together; automatic actions are held",
                               "look at the chassis' internal network"));
  }
  if (status.silent > 0) {
    findings.push_back(finding(std::to_string(status.silent) + " blades are silent",
                               "see which at /api/v1/slots"));
  }
  if (jobs.unknown > 0) {
    findings.push_back(
        finding("the outcome of " + std::to_string(jobs.unknown) + " jobs is unknown",
                "see which at /api/v1/jobs?state=unknown; a report of the blade "
                "settles them, or give them up"));
  }
  return findings;
}

Json countsOf(const OpenJobs& jobs) {
  return {{"open", jobs.open}, {"unknown", jobs.unknown}};
}

}  // namespace

Response getHealth(const Context& context, const Request& /*request*/) {
  const bool isEmbedded = context.engine != nullptr;
  Json findings = Json::array();
  Json jobs;
  if (isEmbedded) {
    const OpenJobs open = openJobs(*context.engine);
    findings = findingsOf(context.engine->status(), open);
    jobs = countsOf(open);
  }
  const char* whenReady = findings.empty() ? "ok" : "degraded";
  Json json{{"status", context.isReady ? whenReady : "starting"},
            {"version", context.version},
            {"engine", isEmbedded ? "embedded" : context.engineEndPoint},
            {"findings", std::move(findings)}};
  if (isEmbedded) {
    json["jobs"] = std::move(jobs);
  }
  return jsonResponse(json, context.isReady ? 200 : 503);
}

}  // namespace supervisor::admin
