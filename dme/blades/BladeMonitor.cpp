#include "dme/blades/BladeMonitor.h"

#include <algorithm>

#include "framework/base/ChassisFile.h"
#include "framework/core_log/Log.h"

namespace dme {

namespace {

long long millisecondsOf(BladeMonitor::Duration duration) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(duration).count();
}

}  // namespace

const char* BladeMonitor::nameOf(State state) {
  switch (state) {
    case State::kUnknown:
      return "unknown";
    case State::kAlive:
      return "alive";
    case State::kLate:
      return "late";
    case State::kSilent:
      return "silent";
  }
  return "?";
}

BladeMonitor::BladeMonitor(const Settings& settings) : settings_(settings) {}

BladeMonitor::Blade* BladeMonitor::findMutable(std::uint32_t slot) {
  const std::uint32_t place = slot < index_.size() ? index_[slot] : 0;
  return place == 0 ? nullptr : &blades_[place - 1];
}

const BladeMonitor::Blade* BladeMonitor::find(std::uint32_t slot) const {
  const std::uint32_t place = slot < index_.size() ? index_[slot] : 0;
  return place == 0 ? nullptr : &blades_[place - 1];
}

void BladeMonitor::expect(std::uint32_t slot, TimePoint now) {
  if (slot > base::kHighestSlot) {
    return;
  }
  Blade* blade = findMutable(slot);
  if (blade == nullptr) {
    if (index_.size() <= slot) {
      index_.resize(slot + 1);
    }
    blades_.push_back({});
    index_[slot] = static_cast<std::uint32_t>(blades_.size());
    blade = &blades_.back();
    blade->slot = slot;
  }
  if (blade->isWatched && (blade->state == State::kAlive || blade->state == State::kLate)) {
    return;
  }
  watched_ += blade->isWatched ? 0 : 1;
  blade->isWatched = true;
  blade->deadline = now + settings_.grace;
  change(*blade, State::kUnknown, now);
}

void BladeMonitor::dismiss(std::uint32_t slot) {
  Blade* blade = findMutable(slot);
  if (blade != nullptr && blade->isWatched) {
    blade->isWatched = false;
    blade->state = State::kUnknown;
    --watched_;
  }
}

bool BladeMonitor::beat(std::uint32_t slot, std::uint32_t number, std::uint32_t timer,
                        TimePoint now) {
  Blade* blade = findMutable(slot);
  if (blade == nullptr) {
    return false;
  }
  count(*blade, number);
  blade->lastTimer = timer;
  blade->lastBeat = now;
  if (blade->isWatched && blade->state != State::kAlive) {
    change(*blade, State::kAlive, now);
  }
  return true;
}

void BladeMonitor::count(Blade& blade, std::uint32_t number) {
  if (blade.beats > 0) {
    const std::uint32_t step = number - blade.lastCount;  // the number wraps around
    constexpr std::uint32_t kHalf = 0x80000000U;
    if (step == 0) {
      ++blade.duplicates;
    } else if (step < kHalf) {
      blade.missed += step - 1;
    } else {
      ++blade.restarts;
    }
  }
  blade.lastCount = number;
  ++blade.beats;
}

BladeMonitor::State BladeMonitor::stateAt(const Blade& blade, TimePoint now) const {
  if (blade.state == State::kUnknown) {
    return now < blade.deadline ? State::kUnknown : State::kSilent;
  }
  if (blade.state == State::kSilent) {
    return State::kSilent;  // until the next heartbeat
  }
  const Duration half = settings_.interval / 2;
  const Duration quiet = now - blade.lastBeat;
  if (quiet > settings_.interval * settings_.misses + half) {
    return State::kSilent;
  }
  return quiet > settings_.interval + half ? State::kLate : State::kAlive;
}

void BladeMonitor::change(Blade& blade, State state, TimePoint now) {
  if (blade.state == state) {
    return;
  }
  if (state == State::kSilent) {
    blade.silentSince = now;
  }
  core_log::logPrintf("BladeMonitor", core_log::serviceLevel(), 5,
                      "blade in slot %u: %s -> %s, last heartbeat %lld ms ago (%llu in all)",
                      blade.slot, nameOf(blade.state), nameOf(state),
                      blade.beats == 0 ? -1LL : millisecondsOf(now - blade.lastBeat),
                      static_cast<unsigned long long>(blade.beats));
  blade.state = state;
}

void BladeMonitor::judge(TimePoint now) {
  for (Blade& blade : blades_) {
    if (blade.isWatched) {
      change(blade, stateAt(blade, now), now);
    }
  }
  judgeTogether(now);
}

void BladeMonitor::judgeTogether(TimePoint now) {
  std::size_t silent = 0;
  std::size_t together = 0;
  for (const Blade& blade : blades_) {
    if (blade.isWatched && blade.state == State::kSilent) {
      ++silent;
      together += now - blade.silentSince <= 2 * settings_.interval ? 1 : 0;
    }
  }
  if (!areActionsHeld_ && together >= 2 && together * 2 > watched_) {
    areActionsHeld_ = true;
    ++alarms_;
    core_log::logPrintf("BladeMonitor", core_log::serviceLevel(), 8,
                        "%zu of %zu blades fell silent together: automatic actions are held",
                        together, watched_);
  } else if (areActionsHeld_ && silent * 2 <= watched_) {
    areActionsHeld_ = false;
    core_log::logPrintf("BladeMonitor", core_log::serviceLevel(), 5,
                        "%zu of %zu blades are silent: automatic actions are free again", silent,
                        watched_);
  }
}

BladeMonitor::Duration BladeMonitor::judgeEvery() const {
  return std::clamp<Duration>(settings_.interval / 4, std::chrono::milliseconds(10),
                              std::chrono::seconds(1));
}

std::size_t BladeMonitor::inState(State state) const {
  return static_cast<std::size_t>(std::count_if(
      blades_.begin(), blades_.end(),
      [state](const Blade& blade) { return blade.isWatched && blade.state == state; }));
}

}  // namespace dme
