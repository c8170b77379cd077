#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "agctl/Failure.h"
#include "agctl/Table.h"

namespace agctl {

/// A job as the supervisor tells it.
struct Job {
  std::uint64_t id = 0;  ///< 0 for one that only would be
  std::uint64_t revision = 0;
  std::string verb;
  std::string target;  ///< "slot 3" or "app fw-1"
  std::string state;
  std::string reason;
  std::string cause;
  std::uint64_t percentage = 0;
  Json document;

  /// The failure is that of an answer that is no job.
  static Outcome<Job> read(const Json& document);

  /// Whether something may still happen to it by itself; an unknown outcome is an end here.
  bool isOpen() const;
  /// "job 17 (start of app fw-1)".
  std::string subject() const;
  /// "running, 40 %".
  std::string progress() const;
};

/// What the end of a job means; for an open one, what it means to give up waiting for it now.
ExitCode exitCodeOf(const Job& job);
/// What to do about a job that did not succeed, empty if nothing comes to mind.
std::string remedyOf(const Job& job);

Tone toneOf(const Job& job);
/// One row for each.
Table jobTable(const std::vector<Job>& jobs);

/// The elements of a list of jobs.
Outcome<std::vector<Job>> readJobs(const Json& list);

}  // namespace agctl
