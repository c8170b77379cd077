#include "supervisor/admin/JobResource.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "supervisor/admin/Context.h"
#include "supervisor/admin/EngineView.h"
#include "supervisor/admin/Fields.h"
#include "supervisor/admin/JobJson.h"
#include "supervisor/admin/JobWait.h"
#include "supervisor/admin/JsonBody.h"
#include "supervisor/admin/Query.h"
#include "supervisor/admin/RefusalProblem.h"

namespace supervisor::admin {
namespace {

constexpr std::uint64_t kMostJobs = 1000;
constexpr std::uint64_t kAnyNumber = std::numeric_limits<std::uint64_t>::max();

std::vector<dme::JobState> statesField(const Request& request) {
  std::vector<dme::JobState> states;
  const auto text = textField(request, "state");
  std::string_view rest = text ? std::string_view(*text) : std::string_view();
  while (!rest.empty()) {
    const std::string_view word = rest.substr(0, rest.find(','));
    rest.remove_prefix(std::min(word.size() + 1, rest.size()));
    const auto state = dme::jobStateNamed(word);
    if (!state) {
      throw ProblemError(
          badValue("state", "query field 'state' has '" + std::string(word) + "'",
                   "give some of accepted,sending,running,succeeded,failed,unknown"));
    }
    states.push_back(*state);
  }
  return states;
}

Problem unknownJob(const std::string& number) {
  return toProblem({dme::Refusal::Reason::kUnknownJob, "no job has the number '" + number + "'",
                    "see the jobs at /api/v1/jobs; the oldest that are over are forgotten"});
}

std::uint64_t jobStep(const Request& request) {
  const std::string& step = request.parameters.front();
  const auto number = numberOf(step);
  if (!number) {
    throw ProblemError(unknownJob(step));
  }
  return *number;
}

}  // namespace

Response getJobs(const Context& context, const Request& request) {
  dme::JobFilter filter;
  filter.slot = slotField(request);
  filter.app = textField(request, "app");
  filter.states = statesField(request);
  filter.before = numberField(request, "before", 0, kAnyNumber);
  filter.most = numberField(request, "limit", 1, kMostJobs).value_or(filter.most);
  return jsonResponse({{"jobs", toJson(context.engine->jobs(filter))}});
}

void getJob(const Context& context, const Request& request, const Reply& reply) {
  const std::uint64_t id = jobStep(request);
  const auto wait = numberField(request, "waitMs", 0, std::uint64_t{kMostWait.count()});
  const auto revision = numberField(request, "revision", 0, kAnyNumber);
  const auto job = context.engine->job(id);
  if (!job) {
    throw ProblemError(unknownJob(request.parameters.front()));
  }
  if (wait.value_or(0) == 0 || isWorthTelling(*job, revision)) {
    reply(jsonResponse(toJson(*job)));
    return;
  }
  waitForJob(context, *job, revision, std::chrono::milliseconds(*wait), reply);
}

void cancelJob(const Context& context, const Request& request, const Reply& reply) {
  const std::uint64_t id = jobStep(request);
  const Json body = bodyOf(request);
  Fields(body).end();
  context.engine->cancelJob(id, [reply](const dme::Granted<dme::JobView>& granted) {
    reply(answerOf(granted, [](const dme::JobView& job) { return jsonResponse(toJson(job)); }));
  });
}

}  // namespace supervisor::admin
