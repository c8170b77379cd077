#include "supervisor/admin/JobWait.h"

#include <memory>
#include <string>

#include "supervisor/admin/Context.h"
#include "supervisor/admin/EngineView.h"
#include "supervisor/admin/JobJson.h"
#include "supervisor/admin/Problem.h"

namespace supervisor::admin {
namespace {

/// One client that waits. Used on the interface's thread.
class JobWait : public std::enable_shared_from_this<JobWait> {
 public:
  JobWait(const Context& context, std::uint64_t job, std::optional<std::uint64_t> revision,
          const Reply& reply)
      : context_(context), job_(job), revision_(revision), reply_(reply) {}

  void begin(std::uint64_t seen, std::chrono::milliseconds time) {
    ++context_.waits;
    reply_.whenOver([self = shared_from_this()] { self->end(); });
    reply_.within(time, [self = shared_from_this()] { return self->present(); });
    watch(seen);
  }

 private:
  void watch(std::uint64_t seen) {
    // The engine calls back on a thread of its own, perhaps amid this call.
    watch_ = context_.engine->watchJob(
        job_, seen, [weak = weak_from_this(), reply = reply_](const dme::JobView& job) {
          reply.post([weak, job] {
            if (const auto self = weak.lock()) {
              self->look(job);
            }
          });
        });
  }
  void look(const dme::JobView& job) {
    if (isWorthTelling(job, revision_)) {
      reply_(jsonResponse(toJson(job)));
    } else {
      watch(job.revision);
    }
  }
  Response present() const {
    const auto job = context_.engine->job(job_);
    if (!job) {
      throw ProblemError({404, "unknown-job", "There is no job of this number",
                          "job " + std::to_string(job_) + " has been forgotten",
                          "see the jobs at /api/v1/jobs"});
    }
    return jsonResponse(toJson(*job));
  }
  void end() {
    --context_.waits;
    context_.engine->unwatchJob(watch_);
  }

  const Context& context_;
  const std::uint64_t job_;
  const std::optional<std::uint64_t> revision_;
  const Reply reply_;
  EngineView::WatchId watch_ = 0;
};

}  // namespace

bool isWorthTelling(const dme::JobView& job, std::optional<std::uint64_t> revision) {
  return revision ? job.revision > *revision
                  : dme::isFinal(job.state) || job.state == dme::JobState::kUnknown;
}

void waitForJob(const Context& context, const dme::JobView& job,
                std::optional<std::uint64_t> revision, std::chrono::milliseconds time,
                const Reply& reply) {
  if (context.waits >= kMostWaits) {
    throw ProblemError({503, "too-many-waits", "Too many clients wait already",
                        std::to_string(context.waits) + " clients wait for a job",
                        "ask without waitMs, or again later"});
  }
  std::make_shared<JobWait>(context, job.id, revision, reply)
      ->begin(revision.value_or(job.revision), time);
}

}  // namespace supervisor::admin
