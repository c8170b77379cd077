#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "dme/jobs/JobView.h"
#include "supervisor/admin/Reply.h"

namespace supervisor::admin {

struct Context;

/// The longest that a client may wait for a job to change.
inline constexpr std::chrono::milliseconds kMostWait{60'000};
/// How many clients may wait at once; less than there are connections, so that the others are
/// still served.
inline constexpr std::size_t kMostWaits = 96;

/// Whether the job is what a client waits for: beyond the revision that it knows, or without one
/// final or of unknown outcome.
bool isWorthTelling(const dme::JobView& job, std::optional<std::uint64_t> revision);

/// Answers with the job as soon as it is worth telling, or after `time` with what it is then.
/// Throws a ProblemError when too many wait already.
void waitForJob(const Context& context, const dme::JobView& job,
                std::optional<std::uint64_t> revision, std::chrono::milliseconds time,
                const Reply& reply);

}  // namespace supervisor::admin
