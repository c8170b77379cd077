#include "agctl/Batch.h"

#include <utility>

#include "agctl/Interrupt.h"

namespace agctl {
namespace {

std::string commandToWait(const std::vector<Job>& jobs) {
  std::string text = "agctl job wait";
  for (const Job& job : jobs) {
    text += " " + std::to_string(job.id);
  }
  return text;
}

}  // namespace

void Batch::add(const std::string& label, Outcome<Job> job) {
  Target& target = targets_.emplace_back();
  if (job) {
    target.job = std::move(*job);
  } else {
    fail(job.error(), label, target);
  }
}

ExitCode Batch::finish() {
  if (session_.options().wait && !session_.options().dryRun) {
    return await();
  }
  show();
  if (session_.options().dryRun) {
    session_.say("nothing was done");
  } else if (const std::vector<Job> jobs = jobsLeft(); !jobs.empty()) {
    session_.say("wait for the end with: " + commandToWait(jobs));
  }
  return code_;
}

ExitCode Batch::await() {
  const Interrupt::Hold hold;
  const std::vector<Followed> followed = follow(session_, jobsLeft());
  std::vector<Job> open;
  auto next = followed.begin();
  for (Target& target : targets_) {
    if (target.job) {
      target.job = next->job;
      judge(*next, target);
      if (next->end != Followed::End::kOver) {
        open.push_back(next->job);
      }
      ++next;
    }
  }
  show();
  if (!open.empty()) {
    session_.say(std::string(open.size() == 1 ? "the job goes" : "the jobs go") +
                 " on; see how it ends with: " + commandToWait(open));
  }
  return code_;
}

std::vector<Job> Batch::jobsLeft() const {
  std::vector<Job> jobs;
  for (const Target& target : targets_) {
    if (target.job) {
      jobs.push_back(*target.job);
    }
  }
  return jobs;
}

void Batch::show() const {
  if (session_.isJson()) {
    for (const Target& target : targets_) {
      session_.printJson(target.problem.is_null() ? target.job->document : target.problem);
    }
  } else if (const std::vector<Job> jobs = jobsLeft(); !jobs.empty()) {
    jobTable(jobs).print(session_.console().out, session_.console().outScreen);
  }
}

/// What follows from how a job stands when it is no longer followed.
void Batch::judge(const Followed& followed, Target& target) {
  const Job& job = followed.job;
  if (followed.failure) {
    fail(*followed.failure, job.subject(), target);
    return;
  }
  const ExitCode code =
      followed.end == Followed::End::kInterrupted ? ExitCode::kUnknownOutcome : exitCodeOf(job);
  code_ = worse(code_, code);
  if (code != ExitCode::kDone) {
    session_.say(job.subject() + (followed.end == Followed::End::kOver ? " is " : " is still ") +
                 job.progress() + (job.cause.empty() ? "" : ": " + job.cause));
    if (const std::string remedy = remedyOf(job); !remedy.empty()) {
      session_.say("remedy: " + remedy);
    }
  }
}

void Batch::fail(const Failure& failure, const std::string& label, Target& target) {
  code_ = worse(code_, session_.tell(failure, label));
  target.problem = problemDocument(failure, label);
}

}  // namespace agctl
