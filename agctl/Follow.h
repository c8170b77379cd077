#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "agctl/Job.h"
#include "agctl/Session.h"

namespace agctl {

/// How a job stands when it is no longer followed.
struct Followed {
  enum class End : std::uint8_t {
    kOver,         ///< it ended, or its outcome is unknown
    kTimedOut,     ///< --timeout is over
    kInterrupted,  ///< the user wants no more
    kLost          ///< the supervisor cannot be asked about it: `failure` says why
  };
  Job job;  ///< as it was last seen
  End end = End::kTimedOut;
  std::optional<Failure> failure = {};
};

/// A supervisor that goes away while jobs are followed may be starting again: it is asked for so
/// long, or until --timeout.
inline constexpr std::chrono::seconds kComesBackWithin{60};

/// Follows jobs until all are over, --timeout is, or the user wants no more, and shows on standard
/// error how far they have come. In the order given. Blocks; the jobs go on whatever happens here.
std::vector<Followed> follow(Session& session, std::vector<Job> jobs);

}  // namespace agctl
