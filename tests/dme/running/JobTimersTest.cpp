#include "dme/running/JobTimers.h"

#include <gtest/gtest.h>

#include <chrono>

namespace dme {
namespace {

using std::chrono::seconds;
using TimePoint = JobTimers::TimePoint;

constexpr TimePoint kNow{seconds(1000)};

TimePoint in(int wait) {
  return kNow + seconds(wait);
}

/// May be sent in 10 s, must be delivered in 20, and finished in 30.
Job job(std::uint64_t id, JobState state = JobState::kAccepted) {
  Job made;
  made.view.id = id;
  made.view.state = state;
  made.dueFrom = in(10);
  made.deliverBy = in(20);
  made.finishBy = in(30);
  return made;
}

TEST(JobTimers, Job_IsLookedAtWhenItsStateAsksForIt) {
  const struct {
    JobState state;
    std::optional<TimePoint> moment;
  } rows[] = {{JobState::kAccepted, in(10)},     {JobState::kSending, in(30)},
              {JobState::kRunning, in(30)},      {JobState::kSucceeded, std::nullopt},
              {JobState::kFailed, std::nullopt}, {JobState::kUnknown, std::nullopt}};
  for (const auto& row : rows) {
    JobTimers timers;
    Job each = job(1, row.state);
    timers.file(each, kNow);
    EXPECT_EQ(timers.first(), row.moment) << nameOf(row.state);
  }
}

TEST(JobTimers, AcceptedJob_IsLookedAtWhenItMayBeSentAndWhenItIsTooLate) {
  JobTimers timers;
  Job each = job(1);
  timers.file(each, in(9));
  EXPECT_EQ(timers.first(), in(10));
  timers.file(each, in(10));
  EXPECT_EQ(timers.first(), in(20)) << "it may be sent already";
  each.dueFrom = in(25);
  timers.file(each, in(10));
  EXPECT_EQ(timers.first(), in(20)) << "it may not be sent any more by then";
}

TEST(JobTimers, Taken_AtItsMomentAndOnce) {
  JobTimers timers;
  Job each = job(7);
  timers.file(each, kNow);
  EXPECT_EQ(timers.take(in(9)), std::nullopt);
  EXPECT_EQ(timers.take(in(10)), 7u);
  EXPECT_EQ(timers.take(in(100)), std::nullopt);
  EXPECT_EQ(timers.first(), std::nullopt);
}

TEST(JobTimers, Several_TheEarliestFirst) {
  JobTimers timers;
  Job late = job(1, JobState::kRunning);
  Job early = job(2);
  Job alsoEarly = job(3);
  timers.file(late, kNow);
  timers.file(early, kNow);
  timers.file(alsoEarly, kNow);
  EXPECT_EQ(timers.take(in(100)), 2u);
  EXPECT_EQ(timers.take(in(100)), 3u);
  EXPECT_EQ(timers.take(in(100)), 1u);
}

TEST(JobTimers, FiledAgain_IsNotLookedAtWhenItWasBefore) {
  JobTimers timers;
  Job each = job(1);
  timers.file(each, kNow);
  each.view.state = JobState::kRunning;
  timers.file(each, kNow);
  EXPECT_EQ(timers.take(in(29)), std::nullopt);
  EXPECT_EQ(timers.take(in(30)), 1u);
  EXPECT_EQ(timers.first(), std::nullopt);
}

TEST(JobTimers, Dropped_IsGoneAndMayBeFiledAgain) {
  JobTimers timers;
  Job each = job(1);
  timers.drop(each);
  timers.file(each, kNow);
  timers.drop(each);
  timers.drop(each);
  EXPECT_EQ(timers.first(), std::nullopt);
  timers.file(each, kNow);
  EXPECT_EQ(timers.take(in(10)), 1u);
}

TEST(JobTimers, OverWhileFiled_IsNotLookedAtAnyMore) {
  JobTimers timers;
  Job each = job(1);
  timers.file(each, kNow);
  each.view.state = JobState::kUnknown;
  timers.file(each, kNow);
  EXPECT_EQ(timers.first(), std::nullopt);
}

}  // namespace
}  // namespace dme
