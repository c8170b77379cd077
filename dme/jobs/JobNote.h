#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "dme/jobs/JobView.h"

namespace dme {

/// Why a job is in its state.
struct JobNote {
  JobReason reason = JobReason::kNone;
  std::string cause;
  std::uint32_t code = 0;
};

/// Of a command that nobody was told, by the state of its job until then.
constexpr JobReason reasonOfUndelivered(JobState state) {
  // Once nobody knew how it went it is not tried again.
  return state == JobState::kUnknown ? JobReason::kDeliverByPast : JobReason::kNotDelivered;
}

inline void setNote(JobView& job, JobNote note) {
  job.reason = note.reason;
  job.cause = std::move(note.cause);
  job.code = note.code;
}

}  // namespace dme
