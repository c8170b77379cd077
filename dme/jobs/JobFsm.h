#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

// The life of a job: something that is done to an application instance or a slot by one command to
// a blade. The state machine is one table; what carries it out is elsewhere.

namespace dme {

/// How far a job has come. All are durable before anything is done that follows from them.
enum class JobState : std::uint8_t {
  kAccepted,   ///< wanted; the blade has certainly not been told
  kSending,    ///< the command is with the gateway: the blade may have been told
  kRunning,    ///< the blade has taken the command and works on it
  kSucceeded,  ///< final
  kFailed,     ///< final; what was wanted was not done, or not wholly
  kUnknown     ///< the blade may have been told, and nobody knows how it went
};

/// What can happen to a job.
enum class JobEvent : std::uint8_t {
  kDue,            ///< its turn has come
  kTaken,          ///< the blade acknowledged the command
  kDone,           ///< the blade acknowledged a command that is done with that
  kNotDelivered,   ///< the gateway says that nothing was sent, and that may change
  kRefused,        ///< the gateway or the blade refuses the command
  kAnswerLost,     ///< the exchange broke off: the blade may have taken the command
  kProgress,       ///< the blade reports that it works on it
  kEndedWell,      ///< the blade reports the end
  kEndedBadly,     ///< the blade reports a failure
  kSeenDone,       ///< a report of the blade's state shows what was wanted
  kSeenUndone,     ///< a report of the blade's state shows that it was not done
  kDeliverByPast,  ///< the time to deliver it is over
  kFinishByPast,   ///< the time to finish it is over
  kRestart,        ///< the engine starts again
  kCancelled       ///< the operator wants it no more
};

/// What follows from a transition, besides the new state.
enum class JobEffect : std::uint8_t {
  kNone,
  kSend,    ///< once the new state is durable, give the command to the gateway
  kRetry,   ///< let the turn come again after a while
  kFinish,  ///< tell those who wait
  kLearn    ///< take over what the report says; the state stays
};

struct JobTransition {
  JobState from;
  JobEvent event;
  JobState to;
  JobEffect effect;
};

/// The table, sorted by state.
std::span<const JobTransition> jobTransitions();

/// The transition of a state and an event. Null when the event has no meaning in that state: that
/// is somebody's error, and never silence.
const JobTransition* findJobTransition(JobState state, JobEvent event);

constexpr bool isFinal(JobState state) {
  return state == JobState::kSucceeded || state == JobState::kFailed;
}

/// The words that people read and the database keeps.
std::string_view nameOf(JobState state);
std::optional<JobState> jobStateNamed(std::string_view name);

/// What the outcome code of a command's stage means, a code of the gateway's.
JobEvent eventOfStageFailure(std::uint32_t code);

}  // namespace dme
