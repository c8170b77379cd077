#include "dme/jobs/JobFsm.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>
#include <vector>

namespace dme {
namespace {

using State = JobState;
using Event = JobEvent;
using Effect = JobEffect;

constexpr State kStates[] = {State::kAccepted,  State::kSending, State::kRunning,
                             State::kSucceeded, State::kFailed,  State::kUnknown};
constexpr Event kEvents[] = {Event::kDue,          Event::kTaken,      Event::kDone,
                             Event::kNotDelivered, Event::kRefused,    Event::kAnswerLost,
                             Event::kProgress,     Event::kEndedWell,  Event::kEndedBadly,
                             Event::kSeenDone,     Event::kSeenUndone, Event::kDeliverByPast,
                             Event::kFinishByPast, Event::kRestart,    Event::kCancelled};

/// A job's way: what happens, and the state that it is in then.
struct Step {
  Event event;
  State state;
};
struct Scenario {
  const char* name;
  std::vector<Step> steps;
};

const std::vector<Scenario>& scenarios() {
  static const auto& all = *new std::vector<Scenario>{
      {"Ordinary",
       {{Event::kDue, State::kSending},
        {Event::kTaken, State::kRunning},
        {Event::kProgress, State::kRunning},
        {Event::kEndedWell, State::kSucceeded},
        {Event::kEndedWell, State::kSucceeded}}},
      {"DoneWithTheAcknowledgement",
       {{Event::kDue, State::kSending}, {Event::kDone, State::kSucceeded}}},
      {"BladeAbsent_IsTriedAgain",
       {{Event::kDue, State::kSending},
        {Event::kNotDelivered, State::kAccepted},
        {Event::kDue, State::kSending},
        {Event::kNotDelivered, State::kAccepted},
        {Event::kDeliverByPast, State::kFailed}}},
      {"Refused", {{Event::kDue, State::kSending}, {Event::kRefused, State::kFailed}}},
      {"AnswerLost_TheReportShowsIt",
       {{Event::kDue, State::kSending},
        {Event::kAnswerLost, State::kUnknown},
        {Event::kSeenDone, State::kSucceeded}}},
      {"AnswerLost_TheReportDoesNotShowIt",
       {{Event::kDue, State::kSending},
        {Event::kAnswerLost, State::kUnknown},
        {Event::kSeenUndone, State::kFailed}}},
      {"AnswerLost_TheBladeWorksOnIt",
       {{Event::kDue, State::kSending},
        {Event::kAnswerLost, State::kUnknown},
        {Event::kProgress, State::kRunning},
        {Event::kEndedBadly, State::kFailed}}},
      {"ReportBeforeAcknowledgement",
       {{Event::kDue, State::kSending},
        {Event::kEndedWell, State::kSucceeded},
        {Event::kTaken, State::kSucceeded}}},
      {"AnswerAfterTheTime_StillTells",
       {{Event::kDue, State::kSending},
        {Event::kFinishByPast, State::kUnknown},
        {Event::kDone, State::kSucceeded},
        {Event::kDone, State::kSucceeded}}},
      {"RefusalAfterTheTime_StillTells",
       {{Event::kDue, State::kSending},
        {Event::kFinishByPast, State::kUnknown},
        {Event::kRefused, State::kFailed},
        {Event::kNotDelivered, State::kFailed}}},
      {"NotDeliveredAfterTheTime_IsNotSentAgain",
       {{Event::kDue, State::kSending},
        {Event::kFinishByPast, State::kUnknown},
        {Event::kNotDelivered, State::kFailed}}},
      {"RestartBeforeSending_GoesOn",
       {{Event::kRestart, State::kAccepted}, {Event::kDue, State::kSending}}},
      {"RestartWhileSending_IsUnknown",
       {{Event::kDue, State::kSending},
        {Event::kRestart, State::kUnknown},
        {Event::kRestart, State::kUnknown},
        {Event::kSeenDone, State::kSucceeded}}},
      {"RestartWhileRunning_GoesOn",
       {{Event::kDue, State::kSending},
        {Event::kTaken, State::kRunning},
        {Event::kRestart, State::kRunning},
        {Event::kEndedWell, State::kSucceeded}}},
      {"NeverEnds_IsUnknownAndSettledByAReport",
       {{Event::kDue, State::kSending},
        {Event::kTaken, State::kRunning},
        {Event::kSeenUndone, State::kRunning},
        {Event::kFinishByPast, State::kUnknown},
        {Event::kSeenUndone, State::kFailed}}},
      {"CancelledInTime", {{Event::kCancelled, State::kFailed}}},
  };
  return all;
}

void PrintTo(const Scenario& scenario, std::ostream* out) {
  *out << scenario.name;
}

class JobScenario : public testing::TestWithParam<Scenario> {};
INSTANTIATE_TEST_SUITE_P(Jobs, JobScenario, testing::ValuesIn(scenarios()),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(JobScenario, GoesItsWay) {
  State state = State::kAccepted;
  for (const Step& step : GetParam().steps) {
    const JobTransition* const transition = findJobTransition(state, step.event);
    ASSERT_NE(transition, nullptr) << nameOf(state) << ' ' << static_cast<int>(step.event);
    state = transition->to;
    ASSERT_EQ(state, step.state) << static_cast<int>(step.event);
  }
}

TEST(JobTransitions, NoPair_StandsTwice) {
  std::set<std::pair<State, Event>> seen;
  for (const JobTransition& row : jobTransitions()) {
    EXPECT_TRUE(seen.emplace(row.from, row.event).second) << nameOf(row.from);
  }
}

TEST(JobTransitions, OnlyAnAcceptedJob_IsSent) {
  for (const JobTransition& row : jobTransitions()) {
    EXPECT_EQ(row.effect == Effect::kSend, row.from == State::kAccepted && row.event == Event::kDue)
        << nameOf(row.from);
    EXPECT_EQ(row.effect == Effect::kSend, row.to == State::kSending && row.from != row.to);
  }
}

// The way back to a state from which the command goes out is open to one event only.
TEST(JobTransitions, NothingButAnUndeliveredCommand_LeadsBackToAccepted) {
  for (const JobTransition& row : jobTransitions()) {
    if (row.to == State::kAccepted && row.from != State::kAccepted) {
      EXPECT_EQ(row.from, State::kSending);
      EXPECT_EQ(row.event, Event::kNotDelivered);
      EXPECT_EQ(row.effect, Effect::kRetry);
    }
  }
}

TEST(JobTransitions, FinalStates_AreNeverLeft) {
  for (const JobTransition& row : jobTransitions()) {
    if (isFinal(row.from)) {
      EXPECT_EQ(row.to, row.from);
      EXPECT_EQ(row.effect, Effect::kNone);
    }
  }
}

TEST(JobTransitions, EveryWayIntoAnEnd_TellsThoseWhoWait) {
  for (const JobTransition& row : jobTransitions()) {
    if (row.from != row.to && (isFinal(row.to) || row.to == State::kUnknown)) {
      EXPECT_EQ(row.effect, Effect::kFinish) << nameOf(row.from);
    }
  }
}

TEST(JobTransitions, Restart_IsKnownInEveryState) {
  for (const State state : kStates) {
    EXPECT_NE(findJobTransition(state, Event::kRestart), nullptr) << nameOf(state);
  }
}

TEST(JobTransitions, BladesReports_AreKnownInEveryStateOfALivingJob) {
  for (const State state : kStates) {
    for (const Event event : {Event::kProgress, Event::kEndedWell, Event::kEndedBadly}) {
      EXPECT_NE(findJobTransition(state, event), nullptr) << nameOf(state);
    }
  }
}

// They are about what the blade did of its own accord, or for an earlier job.
TEST(JobTransitions, BladesReportsOfAJobThatWasNotSent_ChangeNothing) {
  for (const Event event : {Event::kProgress, Event::kEndedWell, Event::kEndedBadly}) {
    const JobTransition* const row = findJobTransition(State::kAccepted, event);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->to, State::kAccepted) << static_cast<int>(event);
    EXPECT_EQ(row->effect, Effect::kNone);
  }
}

// Half-done work looks like undone work, and old state like done work.
TEST(JobTransitions, WhatABladesStateShows_CountsWhenNobodyKnowsTheEnd) {
  for (const auto& [event, end] :
       {std::pair(Event::kSeenDone, State::kSucceeded), {Event::kSeenUndone, State::kFailed}}) {
    for (const State state : {State::kAccepted, State::kSending, State::kRunning}) {
      const JobTransition* const row = findJobTransition(state, event);
      ASSERT_NE(row, nullptr);
      EXPECT_EQ(row->to, state);
      EXPECT_EQ(row->effect, Effect::kNone);
    }
    const JobTransition* const row = findJobTransition(State::kUnknown, event);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->to, end);
  }
}

TEST(JobTransitions, GatewaysLateAnswer_IsKnownInEveryStateAfterSending) {
  const Event answers[] = {Event::kTaken, Event::kDone, Event::kNotDelivered, Event::kRefused,
                           Event::kAnswerLost};
  for (const State state : {State::kSending, State::kUnknown, State::kSucceeded, State::kFailed}) {
    for (const Event answer : answers) {
      EXPECT_NE(findJobTransition(state, answer), nullptr)
          << nameOf(state) << ' ' << static_cast<int>(answer);
    }
  }
  // Of a blade that has reported progress the gateway can have sent it, and not know of an answer.
  for (const Event answer : {Event::kTaken, Event::kAnswerLost}) {
    const JobTransition* const row = findJobTransition(State::kRunning, answer);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->to, State::kRunning);
  }
  // That a command was taken does not tell how it went.
  EXPECT_EQ(findJobTransition(State::kUnknown, Event::kTaken)->to, State::kUnknown);
}

TEST(JobTransitions, FromEveryUnfinishedState_AnEndCanBeReached) {
  for (const State start : kStates) {
    std::set<State> reached{start};
    for (std::size_t before = 0; before != reached.size();) {
      before = reached.size();
      for (const State state : std::set<State>(reached)) {
        for (const Event event : kEvents) {
          if (const JobTransition* const row = findJobTransition(state, event)) {
            reached.insert(row->to);
          }
        }
      }
    }
    EXPECT_TRUE(reached.contains(State::kSucceeded) || reached.contains(State::kFailed))
        << nameOf(start);
  }
}

TEST(JobTransitions, EventWithoutMeaning_HasNone) {
  EXPECT_EQ(findJobTransition(State::kRunning, Event::kDue), nullptr);
  EXPECT_EQ(findJobTransition(State::kSucceeded, Event::kCancelled), nullptr);
  EXPECT_EQ(findJobTransition(State::kAccepted, Event::kTaken), nullptr);
}

TEST(JobState, Names_AreReadBack) {
  for (const State state : kStates) {
    EXPECT_EQ(jobStateNamed(nameOf(state)), state);
  }
  EXPECT_EQ(nameOf(State::kUnknown), "unknown");
  EXPECT_EQ(jobStateNamed("Unknown"), std::nullopt);
  EXPECT_EQ(jobStateNamed(""), std::nullopt);
}

TEST(StageFailure, Codes_TellWhetherTheBladeMayKnow) {
  for (const std::uint32_t code : {576U, 580U, 581U}) {
    EXPECT_EQ(eventOfStageFailure(code), Event::kNotDelivered) << code;
  }
  for (const std::uint32_t code : {577U, 578U, 579U}) {
    EXPECT_EQ(eventOfStageFailure(code), Event::kAnswerLost) << code;
  }
  for (const std::uint32_t code : {0U, 101U, 513U, 1003U}) {
    EXPECT_EQ(eventOfStageFailure(code), Event::kRefused) << code;
  }
}

}  // namespace
}  // namespace dme
