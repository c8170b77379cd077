#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "framework/os/Clock.h"

namespace dme {

/// Judges by their heartbeats which blades are alive.
///
/// A blade is watched from the moment it is expected. Until its first heartbeat its state is
/// unknown, for a grace period at most. Then, counted from the last heartbeat in intervals:
///
///   up to 1.5            alive   (half an interval is left for a heartbeat on its way)
///   up to misses + 0.5   late
///   beyond               silent, as is a blade that was not heard within its grace period
///
/// If more than half of the watched blades, and at least two, have fallen silent within
/// two intervals, the cause is taken to lie outside of them: one alarm is raised, and automatic
/// actions are held until no more than half of the blades are silent.
///
/// Takes the time from its caller, who reads the steady clock. Not thread-safe.
class BladeMonitor {
 public:
  using TimePoint = os::Clock::TimePoint;
  using Duration = os::Clock::Duration;

  struct Settings {
    Duration interval = std::chrono::seconds(1);  ///< between two heartbeats of a blade
    unsigned misses = 3;                          ///< this many heartbeats may be missed
    Duration grace = std::chrono::seconds(30);    ///< for the first heartbeat
  };

  enum class State : std::uint8_t { kUnknown, kAlive, kLate, kSilent };
  static const char* nameOf(State state);

  /// What is known of one slot's blade. The counts come from the number that each heartbeat
  /// carries, and do not depend on any clock.
  struct Blade {
    std::uint32_t slot = 0;
    State state = State::kUnknown;
    bool isWatched = false;
    std::uint32_t lastCount = 0;
    std::uint32_t lastTimer = 0;   ///< as the blade sent it
    std::uint64_t beats = 0;       ///< heartbeats received
    std::uint64_t duplicates = 0;  ///< heartbeats with the number of the one before
    std::uint64_t missed = 0;      ///< numbers left out
    std::uint64_t restarts = 0;    ///< heartbeats whose number went back
    TimePoint lastBeat{};          ///< valid when beats > 0
    TimePoint deadline{};          ///< end of the grace period, while unknown
    TimePoint silentSince{};       ///< valid while silent
  };

  explicit BladeMonitor(const Settings& settings);

  /// Watches the slot's blade. One that is heard already is left as it is; another has its grace
  /// period from `now`.
  void expect(std::uint32_t slot, TimePoint now);
  /// The slot's blade is not watched any longer; its counts stay.
  void dismiss(std::uint32_t slot);

  /// Takes a heartbeat. False when no blade was ever expected in this slot: nothing is kept of it.
  bool beat(std::uint32_t slot, std::uint32_t count, std::uint32_t timer, TimePoint now);

  /// Brings every state up to date. Heartbeats that have arrived are to be taken first.
  void judge(TimePoint now);
  /// How often judge() should be called, as long as anybody is watched.
  Duration judgeEvery() const;
  /// A judgement that comes later than it should by more than this would take the judge's own
  /// silence for the blades'; it should wait for hearFor() then, in which each blade beats.
  Duration mostDelay() const { return settings_.interval / 2; }
  Duration hearFor() const { return settings_.interval + settings_.interval / 2; }
  bool isWatching() const { return watched_ > 0; }

  /// True while most blades are silent together: nothing may be done to a blade on its own account.
  bool areActionsHeld() const { return areActionsHeld_; }
  /// Alarms raised since the start.
  std::uint64_t alarms() const { return alarms_; }
  std::size_t watched() const { return watched_; }
  std::size_t inState(State state) const;

  /// The blade, or null when none was ever expected in this slot. Valid until the next expect().
  const Blade* find(std::uint32_t slot) const;

 private:
  Blade* findMutable(std::uint32_t slot);
  State stateAt(const Blade& blade, TimePoint now) const;
  void change(Blade& blade, State state, TimePoint now);
  static void count(Blade& blade, std::uint32_t count);
  void judgeTogether(TimePoint now);

  const Settings settings_;
  std::vector<std::uint32_t> index_;  // slot to place in blades_ plus one; 0 for none
  std::vector<Blade> blades_;
  std::size_t watched_ = 0;
  bool areActionsHeld_ = false;
  std::uint64_t alarms_ = 0;
};

}  // namespace dme
