#include "dme/blades/BladeMonitor.h"

#include <gtest/gtest.h>

#include "tests/support/LogCapture.h"

namespace dme {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using State = BladeMonitor::State;

/// A monitor with an interval of 1 s, three misses and 30 s of grace, and a time of its own.
class Monitor : public testing::Test {
 protected:
  void pass(milliseconds by) {
    now_ += by;
    monitor_.judge(now_);
  }
  State stateOf(std::uint32_t slot) const { return monitor_.find(slot)->state; }
  bool beat(std::uint32_t slot) { return monitor_.beat(slot, ++count_, 1, now_); }

  BladeMonitor::TimePoint now_{seconds(1000)};
  BladeMonitor monitor_{{seconds(1), 3, seconds(30)}};
  std::uint32_t count_ = 0;
};

TEST_F(Monitor, NobodyExpected_TakesNoHeartbeat) {
  EXPECT_FALSE(beat(3));
  EXPECT_EQ(monitor_.find(3), nullptr);
  EXPECT_FALSE(monitor_.isWatching());
  EXPECT_FALSE(monitor_.beat(4294967295U, 1, 1, now_));
}

TEST_F(Monitor, ExpectedAndNotHeard_IsUnknownUntilGraceEnds) {
  monitor_.expect(3, now_);
  EXPECT_TRUE(monitor_.isWatching());
  pass(milliseconds(29999));
  EXPECT_EQ(stateOf(3), State::kUnknown);
  pass(milliseconds(1));
  EXPECT_EQ(stateOf(3), State::kSilent);
}

TEST_F(Monitor, Heard_GoesThroughItsStatesAtTheirLimits) {
  const test_support::LogCapture log;
  monitor_.expect(3, now_);
  EXPECT_TRUE(beat(3));
  EXPECT_EQ(stateOf(3), State::kAlive);
  pass(milliseconds(1500));
  EXPECT_EQ(stateOf(3), State::kAlive);
  pass(milliseconds(1));
  EXPECT_EQ(stateOf(3), State::kLate);
  pass(milliseconds(1999));
  EXPECT_EQ(stateOf(3), State::kLate);
  pass(milliseconds(1));
  EXPECT_EQ(stateOf(3), State::kSilent);
  pass(seconds(100));
  EXPECT_EQ(stateOf(3), State::kSilent);
  beat(3);
  EXPECT_EQ(stateOf(3), State::kAlive);
  const std::vector<test_support::LogLine> expected{
      {5, "BladeMonitor", "blade in slot 3: unknown -> alive, last heartbeat 0 ms ago (1 in all)"},
      {5, "BladeMonitor", "blade in slot 3: alive -> late, last heartbeat 1501 ms ago (1 in all)"},
      {5, "BladeMonitor", "blade in slot 3: late -> silent, last heartbeat 3501 ms ago (1 in all)"},
      {5, "BladeMonitor", "blade in slot 3: silent -> alive, last heartbeat 0 ms ago (2 in all)"}};
  EXPECT_EQ(log.lines(), expected);
}

TEST_F(Monitor, OneMissAllowed_IsSilentWithoutBeingLate) {
  BladeMonitor strict({seconds(1), 1, seconds(30)});
  strict.expect(3, now_);
  strict.beat(3, 1, 1, now_);
  strict.judge(now_ + milliseconds(1500));
  EXPECT_EQ(strict.find(3)->state, State::kAlive);
  strict.judge(now_ + milliseconds(1501));
  EXPECT_EQ(strict.find(3)->state, State::kSilent);
}

TEST_F(Monitor, LateThenHeard_IsAliveAgain) {
  monitor_.expect(3, now_);
  beat(3);
  pass(milliseconds(2000));
  ASSERT_EQ(stateOf(3), State::kLate);
  beat(3);
  pass(milliseconds(1000));
  EXPECT_EQ(stateOf(3), State::kAlive);
}

TEST_F(Monitor, ExpectedAgainWhileAlive_StaysAlive) {
  monitor_.expect(3, now_);
  beat(3);
  monitor_.expect(3, now_);
  EXPECT_EQ(stateOf(3), State::kAlive);
  EXPECT_EQ(monitor_.watched(), 1u);
}

TEST_F(Monitor, ExpectedAgainWhileSilent_HasItsGraceAnew) {
  monitor_.expect(3, now_);
  beat(3);
  pass(seconds(10));
  ASSERT_EQ(stateOf(3), State::kSilent);
  monitor_.expect(3, now_);
  pass(milliseconds(29999));
  EXPECT_EQ(stateOf(3), State::kUnknown);
  pass(milliseconds(1));
  EXPECT_EQ(stateOf(3), State::kSilent);
}

TEST_F(Monitor, Dismissed_IsJudgedNoMoreButKeepsItsCounts) {
  monitor_.expect(3, now_);
  beat(3);
  monitor_.dismiss(3);
  monitor_.dismiss(3);
  monitor_.dismiss(4);
  EXPECT_FALSE(monitor_.isWatching());
  EXPECT_TRUE(beat(3));
  pass(seconds(100));
  EXPECT_EQ(stateOf(3), State::kUnknown);
  EXPECT_EQ(monitor_.find(3)->beats, 2u);
  EXPECT_EQ(monitor_.inState(State::kSilent), 0u);
}

TEST_F(Monitor, Counts_TellDuplicatesGapsAndRestarts) {
  monitor_.expect(3, now_);
  const struct {
    std::uint32_t count;
    std::uint64_t beats, duplicates, missed, restarts;
  } kSteps[] = {
      {5, 1, 0, 0, 0},  // the first number says nothing
      {6, 2, 0, 0, 0},
      {6, 3, 1, 0, 0},
      {9, 4, 1, 2, 0},
      {1, 5, 1, 2, 1},
      {0, 6, 1, 2, 2},
      {0, 7, 2, 2, 2},
      {4294967295U, 8, 2, 2, 3},
      {0, 9, 2, 2, 3},  // wrapped around, nothing missed
      {2147483647, 10, 2, 2147483648ULL, 3},
  };
  for (const auto& step : kSteps) {
    monitor_.beat(3, step.count, 7, now_);
    const BladeMonitor::Blade& blade = *monitor_.find(3);
    EXPECT_EQ(blade.lastCount, step.count);
    EXPECT_EQ(blade.beats, step.beats) << step.count;
    EXPECT_EQ(blade.duplicates, step.duplicates) << step.count;
    EXPECT_EQ(blade.missed, step.missed) << step.count;
    EXPECT_EQ(blade.restarts, step.restarts) << step.count;
  }
  EXPECT_EQ(monitor_.find(3)->lastTimer, 7u);
}

TEST_F(Monitor, OneBladeOfManySilent_RaisesNoAlarm) {
  for (std::uint32_t slot = 1; slot <= 4; ++slot) {
    monitor_.expect(slot, now_);
    beat(slot);
  }
  for (int i = 0; i < 10; ++i) {
    pass(seconds(1));
    beat(1);
    beat(2);
  }
  EXPECT_EQ(monitor_.inState(State::kSilent), 2u);
  EXPECT_FALSE(monitor_.areActionsHeld());
}

TEST_F(Monitor, OnlyBladeSilent_RaisesNoAlarm) {
  monitor_.expect(1, now_);
  beat(1);
  pass(seconds(10));
  EXPECT_EQ(stateOf(1), State::kSilent);
  EXPECT_FALSE(monitor_.areActionsHeld());
}

TEST_F(Monitor, MostBladesSilentTogether_RaiseOneAlarmAndHoldUntilTheyAreBack) {
  const test_support::LogCapture log;
  for (std::uint32_t slot = 1; slot <= 4; ++slot) {
    monitor_.expect(slot, now_);
    beat(slot);
  }
  for (int i = 0; i < 6; ++i) {
    pass(seconds(1));
    beat(1);
  }
  EXPECT_TRUE(monitor_.areActionsHeld());
  EXPECT_EQ(monitor_.alarms(), 1u);
  EXPECT_EQ(log.count(8, "3 of 4 blades fell silent together: automatic actions are held"), 1u);
  pass(seconds(100));  // the fourth follows: still the same alarm
  EXPECT_EQ(monitor_.alarms(), 1u);
  beat(1);
  monitor_.judge(now_);
  EXPECT_TRUE(monitor_.areActionsHeld());
  beat(2);
  monitor_.judge(now_);
  EXPECT_FALSE(monitor_.areActionsHeld());
  EXPECT_TRUE(log.contains(5, "2 of 4 blades are silent: automatic actions are free again"));
}

TEST_F(Monitor, BladesSilentOneByOne_RaiseNoAlarm) {
  for (std::uint32_t slot = 1; slot <= 5; ++slot) {
    monitor_.expect(slot, now_);
  }
  std::uint32_t firstHeard = 1;
  for (int i = 0; i < 25; ++i) {
    firstHeard += i % 5 == 4 ? 1 : 0;
    for (std::uint32_t slot = firstHeard; slot <= 5; ++slot) {
      beat(slot);
    }
    pass(seconds(1));
  }
  EXPECT_GE(monitor_.inState(State::kSilent), 4u);
  EXPECT_EQ(monitor_.alarms(), 0u);
}

TEST_F(Monitor, JudgedAFarTimeLater_CountsAsFallenSilentTogether) {
  monitor_.expect(1, now_);
  monitor_.expect(2, now_);
  beat(1);
  beat(2);
  pass(std::chrono::hours(24));  // as after the process stood still
  EXPECT_TRUE(monitor_.areActionsHeld());
}

TEST(BladeMonitor, JudgedOften_EnoughForItsInterval) {
  EXPECT_EQ(BladeMonitor({seconds(1), 3, seconds(1)}).judgeEvery(), milliseconds(250));
  EXPECT_EQ(BladeMonitor({seconds(3600), 3, seconds(1)}).judgeEvery(), seconds(1));
  EXPECT_EQ(BladeMonitor({milliseconds(4), 3, seconds(1)}).judgeEvery(), milliseconds(10));
}

}  // namespace
}  // namespace dme
