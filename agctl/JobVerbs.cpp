#include <array>
#include <limits>
#include <ostream>

#include "agctl/Arguments.h"
#include "agctl/Batch.h"
#include "agctl/Details.h"
#include "agctl/Job.h"
#include "agctl/Offer.h"
#include "agctl/Verb.h"
#include "dme/jobs/JobFsm.h"

namespace agctl {
namespace {

constexpr unsigned kUsualLimit = 100;
constexpr unsigned kMostLimit = 1000;

/// Which jobs to list, as the user gives it.
struct Filter {
  std::optional<std::uint32_t> slot;
  std::string app;
  std::vector<std::string> states;
  std::optional<std::uint64_t> before;
  unsigned limit = kUsualLimit;

  std::string query() const {
    std::string text = "?limit=" + std::to_string(limit);
    text += slot ? "&slot=" + std::to_string(*slot) : "";
    text += app.empty() ? "" : "&app=" + encode(app);
    text += before ? "&before=" + std::to_string(*before) : "";
    for (const std::string& state : states) {
      text += (&state == &states.front() ? "&state=" : ",") + state;
    }
    return text;
  }
};

Action declareList(CLI::App& app) {
  auto filter = std::make_shared<Filter>();
  app.add_option("--slot", filter->slot, "only those of one slot")
      ->check(slotNumber())
      ->check(offer(kOfferSlots))
      ->option_text("N");
  app.add_option("--app", filter->app, "only those of one application instance")
      ->check(identifier())
      ->check(offer(kOfferApps))
      ->option_text("ID");
  app.add_option("--state", filter->states,
                 "only those in these states: accepted, sending, running, succeeded, failed, "
                 "unknown")
      ->delimiter(',')
      ->check(offerWords({"accepted", "sending", "running", "succeeded", "failed", "unknown"}))
      ->check([](const std::string& state) -> std::string {
        return dme::jobStateNamed(state) ? "" : "'" + state + "' is no state of a job";
      })
      ->allow_extra_args(false)
      ->option_text("A,B");
  app.add_option("--before", filter->before, "only those of lower numbers")
      ->check(offer(kOfferJobs))
      ->check(wholeNumber(1, std::numeric_limits<std::uint64_t>::max()))
      ->option_text("JOB");
  app.add_option("--limit", filter->limit, "how many at most, the latest first")
      ->check(wholeNumber(1, kMostLimit))
      ->option_text("N (100)");
  return [filter](Session& session) {
    return session.show("/jobs" + filter->query(),
                        [&session](const Json& document) -> Outcome<void> {
                          const auto jobs = readJobs(listOf(document, "jobs"));
                          if (!jobs) {
                            return tl::unexpected(jobs.error());
                          }
                          jobTable(*jobs).print(session.console().out, session.console().outScreen);
                          return {};
                        });
  };
}

Outcome<Job> getJob(Session& session, std::uint64_t id) {
  const auto document = session.server().get("/jobs/" + std::to_string(id));
  return document ? Job::read(*document) : tl::unexpected(document.error());
}

std::string labelOf(std::uint64_t id, const std::vector<std::uint64_t>& ids) {
  return ids.size() > 1 ? "job " + std::to_string(id) : "";
}

ExitCode showJobs(Session& session, const std::vector<std::uint64_t>& ids) {
  ExitCode code = ExitCode::kDone;
  const Console& console = session.console();
  for (const std::uint64_t id : ids) {
    const auto job = getJob(session, id);
    if (!job) {
      code = worse(code, session.fail(job.error(), labelOf(id, ids)));
    } else if (session.isJson()) {
      session.printJson(job->document);
    } else {
      console.out << (id == ids.front() ? "" : "\n");
      printDetails(console.out, console.outScreen, job->document);
    }
  }
  return code;
}

Action declareShow(CLI::App& app) {
  return [ids = addJobIds(app, kOfferJobs)](Session& session) {
    return showJobs(session, *ids);
  };
}

ExitCode waitFor(Session& session, const std::vector<std::uint64_t>& ids) {
  Batch batch(session);
  for (const std::uint64_t id : ids) {
    batch.add(labelOf(id, ids), getJob(session, id));
  }
  return batch.await();
}

Action declareWait(CLI::App& app) {
  return [ids = addJobIds(app, kOfferOpenJobs)](Session& session) {
    return waitFor(session, *ids);
  };
}

ExitCode cancel(Session& session, const std::vector<std::uint64_t>& ids) {
  ExitCode code = ExitCode::kDone;
  for (const std::uint64_t id : ids) {
    const auto answer =
        session.server().order("POST", "/jobs/" + std::to_string(id) + "/cancel", Json::object());
    const auto job = answer ? Job::read(*answer) : tl::unexpected(answer.error());
    if (!job) {
      code = worse(code, session.fail(job.error(), labelOf(id, ids)));
    } else if (session.isJson()) {
      session.printJson(job->document);
    } else {
      session.say(job->subject() + " is " + job->progress());
    }
  }
  return code;
}

Action declareCancel(CLI::App& app) {
  return [ids = addJobIds(app, kOfferJobsToCancel)](Session& session) {
    return cancel(session, *ids);
  };
}

}  // namespace

std::span<const Verb> jobVerbs() {
  static constexpr std::array kVerbs{
      Verb{"list", "jobs, the latest first", "agctl job list --slot 3 --state accepted,running",
           kPlain, &declareList},
      Verb{"show", "all that is known of a job", "agctl job show 1", kPlain, &declareShow},
      Verb{"wait", "wait for the end of jobs; the exit code says how they ended",
           "agctl job wait 1 2 --timeout 600", kPlain, &declareWait},
      Verb{"cancel", "give up jobs that have not reached their blade, or whose outcome is unknown",
           "agctl job cancel 17", kPlain, &declareCancel}};
  return kVerbs;
}

}  // namespace agctl
