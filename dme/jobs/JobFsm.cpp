#include "dme/jobs/JobFsm.h"

#include <algorithm>
#include <array>

namespace dme {

namespace {

using State = JobState;
using Event = JobEvent;
using Effect = JobEffect;

// A command is given to the gateway in exactly one transition, out of kAccepted, and nothing leads
// back to kAccepted from where the blade may have been told: no command goes out twice by itself.
constexpr std::array kTransitions{
    JobTransition{State::kAccepted, Event::kDue, State::kSending, Effect::kSend},
    JobTransition{State::kAccepted, Event::kDeliverByPast, State::kFailed, Effect::kFinish},
    JobTransition{State::kAccepted, Event::kCancelled, State::kFailed, Effect::kFinish},
    JobTransition{State::kAccepted, Event::kRestart, State::kAccepted, Effect::kNone},
    // Reports speak of what the blade did of its own accord or for an earlier job.
    JobTransition{State::kAccepted, Event::kProgress, State::kAccepted, Effect::kNone},
    JobTransition{State::kAccepted, Event::kEndedWell, State::kAccepted, Effect::kNone},
    JobTransition{State::kAccepted, Event::kEndedBadly, State::kAccepted, Effect::kNone},
    JobTransition{State::kAccepted, Event::kSeenDone, State::kAccepted, Effect::kNone},
    JobTransition{State::kAccepted, Event::kSeenUndone, State::kAccepted, Effect::kNone},

    JobTransition{State::kSending, Event::kTaken, State::kRunning, Effect::kNone},
    JobTransition{State::kSending, Event::kDone, State::kSucceeded, Effect::kFinish},
    // The one way back: the gateway vouches for it that nothing went out.
    JobTransition{State::kSending, Event::kNotDelivered, State::kAccepted, Effect::kRetry},
    JobTransition{State::kSending, Event::kRefused, State::kFailed, Effect::kFinish},
    JobTransition{State::kSending, Event::kAnswerLost, State::kUnknown, Effect::kFinish},
    // A blade can be faster with its report than its acknowledgement.
    JobTransition{State::kSending, Event::kProgress, State::kRunning, Effect::kLearn},
    JobTransition{State::kSending, Event::kEndedWell, State::kSucceeded, Effect::kFinish},
    JobTransition{State::kSending, Event::kEndedBadly, State::kFailed, Effect::kFinish},
    JobTransition{State::kSending, Event::kSeenDone, State::kSending, Effect::kNone},
    JobTransition{State::kSending, Event::kSeenUndone, State::kSending, Effect::kNone},
    JobTransition{State::kSending, Event::kFinishByPast, State::kUnknown, Effect::kFinish},
    JobTransition{State::kSending, Event::kRestart, State::kUnknown, Effect::kFinish},

    // The gateway's answer after the blade's own report says nothing new, whatever it is.
    JobTransition{State::kRunning, Event::kTaken, State::kRunning, Effect::kNone},
    JobTransition{State::kRunning, Event::kAnswerLost, State::kRunning, Effect::kNone},
    JobTransition{State::kRunning, Event::kProgress, State::kRunning, Effect::kLearn},
    JobTransition{State::kRunning, Event::kEndedWell, State::kSucceeded, Effect::kFinish},
    JobTransition{State::kRunning, Event::kEndedBadly, State::kFailed, Effect::kFinish},
    // Half-done work looks like undone work, and old state like done work.
    JobTransition{State::kRunning, Event::kSeenDone, State::kRunning, Effect::kNone},
    JobTransition{State::kRunning, Event::kSeenUndone, State::kRunning, Effect::kNone},
    JobTransition{State::kRunning, Event::kFinishByPast, State::kUnknown, Effect::kFinish},
    JobTransition{State::kRunning, Event::kRestart, State::kRunning, Effect::kNone},

    // A final state stands. What comes late is heard and changes nothing.
    // The gateway's late answer to a command whose end was reported.
    JobTransition{State::kSucceeded, Event::kDone, State::kSucceeded, Effect::kNone},
    JobTransition{State::kSucceeded, Event::kNotDelivered, State::kSucceeded, Effect::kNone},
    JobTransition{State::kSucceeded, Event::kRefused, State::kSucceeded, Effect::kNone},
    JobTransition{State::kSucceeded, Event::kTaken, State::kSucceeded, Effect::kNone},
    JobTransition{State::kSucceeded, Event::kAnswerLost, State::kSucceeded, Effect::kNone},
    JobTransition{State::kSucceeded, Event::kProgress, State::kSucceeded, Effect::kNone},
    JobTransition{State::kSucceeded, Event::kEndedWell, State::kSucceeded, Effect::kNone},
    JobTransition{State::kSucceeded, Event::kEndedBadly, State::kSucceeded, Effect::kNone},
    JobTransition{State::kSucceeded, Event::kRestart, State::kSucceeded, Effect::kNone},

    JobTransition{State::kFailed, Event::kDone, State::kFailed, Effect::kNone},
    JobTransition{State::kFailed, Event::kNotDelivered, State::kFailed, Effect::kNone},
    JobTransition{State::kFailed, Event::kRefused, State::kFailed, Effect::kNone},
    JobTransition{State::kFailed, Event::kTaken, State::kFailed, Effect::kNone},
    JobTransition{State::kFailed, Event::kAnswerLost, State::kFailed, Effect::kNone},
    JobTransition{State::kFailed, Event::kProgress, State::kFailed, Effect::kNone},
    JobTransition{State::kFailed, Event::kEndedWell, State::kFailed, Effect::kNone},
    JobTransition{State::kFailed, Event::kEndedBadly, State::kFailed, Effect::kNone},
    JobTransition{State::kFailed, Event::kRestart, State::kFailed, Effect::kNone},

    // The blade alone can tell how it went, unless the gateway's answer comes at last and does.
    JobTransition{State::kUnknown, Event::kDone, State::kSucceeded, Effect::kFinish},
    JobTransition{State::kUnknown, Event::kNotDelivered, State::kFailed, Effect::kFinish},
    JobTransition{State::kUnknown, Event::kRefused, State::kFailed, Effect::kFinish},
    JobTransition{State::kUnknown, Event::kTaken, State::kUnknown, Effect::kNone},
    JobTransition{State::kUnknown, Event::kAnswerLost, State::kUnknown, Effect::kNone},
    JobTransition{State::kUnknown, Event::kProgress, State::kRunning, Effect::kLearn},
    JobTransition{State::kUnknown, Event::kEndedWell, State::kSucceeded, Effect::kFinish},
    JobTransition{State::kUnknown, Event::kEndedBadly, State::kFailed, Effect::kFinish},
    JobTransition{State::kUnknown, Event::kSeenDone, State::kSucceeded, Effect::kFinish},
    JobTransition{State::kUnknown, Event::kSeenUndone, State::kFailed, Effect::kFinish},
    JobTransition{State::kUnknown, Event::kCancelled, State::kFailed, Effect::kFinish},
    JobTransition{State::kUnknown, Event::kRestart, State::kUnknown, Effect::kNone},
};

constexpr std::array<std::string_view, 6> kNames{"accepted",  "sending", "running",
                                                 "succeeded", "failed",  "unknown"};

}  // namespace

std::span<const JobTransition> jobTransitions() {
  return kTransitions;
}

const JobTransition* findJobTransition(JobState state, JobEvent event) {
  const auto* const found = std::find_if(
      kTransitions.begin(), kTransitions.end(),
      [&](const JobTransition& row) { return row.from == state && row.event == event; });
  return found == kTransitions.end() ? nullptr : found;
}

std::string_view nameOf(JobState state) {
  return kNames[static_cast<std::size_t>(state)];
}

std::optional<JobState> jobStateNamed(std::string_view name) {
  const auto* const found = std::find(kNames.begin(), kNames.end(), name);
  if (found == kNames.end()) {
    return std::nullopt;
  }
  return static_cast<JobState>(found - kNames.begin());
}

JobEvent eventOfStageFailure(std::uint32_t code) {
  switch (code) {
    case 576:  // no channel to the blade
    case 580:  // no blade registered in the slot
    case 581:  // its blade is not valid
      return JobEvent::kNotDelivered;
    case 577:  // the exchange broke off
    case 578:  // no answer
    case 579:  // half an answer
      return JobEvent::kAnswerLost;
    default:
      return JobEvent::kRefused;
  }
}

}  // namespace dme
