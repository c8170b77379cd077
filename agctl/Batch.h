#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "agctl/Follow.h"
#include "agctl/Job.h"
#include "agctl/Session.h"

namespace agctl {

/// What becomes of the targets of one command: each has a job or a failure.
class Batch {
 public:
  explicit Batch(Session& session) : session_(session) {}

  /// A target with what came of asking for it. A failure is told at once, with the label if there
  /// is one.
  void add(const std::string& label, Outcome<Job> job);
  std::size_t size() const { return targets_.size(); }
  std::size_t jobs() const { return jobsLeft().size(); }

  /// What the options want: shows the jobs, or waits for their ends.
  ExitCode finish();
  /// Waits for the jobs' ends and shows how they ended.
  ExitCode await();

 private:
  struct Target {
    std::optional<Job> job;
    Json problem;  ///< in the place of the job with JSON
  };

  std::vector<Job> jobsLeft() const;
  void show() const;
  void judge(const Followed& followed, Target& target);
  void fail(const Failure& failure, const std::string& label, Target& target);

  Session& session_;
  std::vector<Target> targets_;
  ExitCode code_ = ExitCode::kDone;
};

}  // namespace agctl
