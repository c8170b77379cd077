#include "sma/Fleet.h"

#include <algorithm>
#include <limits>

#include "sma/Requests.h"

namespace sma {
namespace {

constexpr std::size_t kListener = std::numeric_limits<std::size_t>::max();
constexpr std::chrono::milliseconds kLongestPoll{100};
/// Blades that do not listen still have to name a port: one below the ephemeral range.
constexpr std::uint32_t kSilentPortBase = 20'000;
constexpr std::uint32_t kSilentPorts = 10'000;

std::uint32_t portOf(std::uint32_t slot, std::uint32_t listenBase) {
  return listenBase == 0 ? kSilentPortBase + slot % kSilentPorts : listenBase + slot;
}

}  // namespace

Fleet::Fleet(const Settings& settings, const Scenario& scenario)
    : settings_(settings), start_(BladeAgent::Clock::now()) {
  for (const std::uint32_t slot : settings_.slots) {
    addBlade(slot, scenario);
  }
}

Fleet::~Fleet() = default;

// Blades of a rack do not all do one thing in one instant: many are spread over an interval, few
// over a moment, which is what a new connection needs.
BladeAgent::Duration Fleet::spread(std::uint64_t seed, BladeAgent::Duration interval) const {
  constexpr BladeAgent::Duration kMoment{50};
  constexpr std::size_t kSmallFleet = 64;
  const auto whole = settings_.slots.size() <= kSmallFleet ? kMoment : interval;
  return kMoment + whole * static_cast<std::int64_t>(seed % 1000) / 1000;
}

Reporter::Settings Fleet::reportsOf(std::uint64_t seed) const {
  Reporter::Settings reports;
  reports.every = settings_.report;
  reports.first = spread(seed, settings_.report);
  reports.failChance = settings_.failChance;
  reports.workChance = settings_.workChance;
  reports.seed = seed;
  return reports;
}

void Fleet::addBlade(std::uint32_t slot, const Scenario& scenario) {
  BladeAgent::Settings blade;
  blade.slot = slot;
  blade.ip = settings_.ip;
  blade.port = portOf(slot, settings_.listenBase);
  blade.beat = settings_.beat;
  blade.beatWait = std::max(settings_.beat, std::chrono::milliseconds(5000));
  blade.seed = settings_.seed * 1'000'003 + slot;
  blade.apps = settings_.apps;
  blade.reports = reportsOf(blade.seed);
  scenario.apply(blade);

  const std::size_t number = blades_.size();
  const auto startDelay = spread(blade.seed, settings_.beat);
  const auto socket = sockets_.add(settings_.gateway);
  bladeOf_.resize(std::max(bladeOf_.size(), socket + 1), kListener);
  bladeOf_[socket] = number;
  socketOf_.push_back(socket);
  if (settings_.listenBase != 0) {
    const auto listener = sockets_.addListener("tcp://127.0.0.1:" + std::to_string(blade.port));
    bladeOf_.resize(std::max(bladeOf_.size(), listener + 1), kListener);
    bladeOf_[listener] = kListener;
  }
  blades_.push_back(std::make_unique<BladeAgent>(std::move(blade), start_ + startDelay));
  scheduled_.push_back({});
  schedule(number);
}

void Fleet::schedule(std::size_t blade) {
  const auto time = blades_[blade]->due();
  if (time == scheduled_[blade]) {
    return;
  }
  scheduled_[blade] = time;
  due_.push({time, blade});
}

void Fleet::serveDue(BladeAgent::TimePoint now) {
  while (!due_.empty() && due_.top().time <= now) {
    const Due due = due_.top();
    due_.pop();
    if (due.time != scheduled_[due.blade]) {
      continue;  // rescheduled since
    }
    scheduled_[due.blade] = {};
    const auto socket = socketOf_[due.blade];
    blades_[due.blade]->onTime(now, [this, socket](const msglyr::Message& message) {
      return sockets_.send(socket, message);
    });
    schedule(due.blade);
  }
}

void Fleet::onMessage(msglyr::DealerSet::Index index, const std::string& routing,
                      msglyr::Message& message) {
  const std::size_t blade = bladeOf_[index];
  if (blade == kListener) {
    refuseCommand(index, routing, message);
    return;
  }
  blades_[blade]->onMessage(message, BladeAgent::Clock::now());
  schedule(blade);
}

void Fleet::refuseCommand(msglyr::DealerSet::Index index, const std::string& routing,
                          msglyr::Message& message) {
  ++commands_;
  if (msglyr::Message reply; makeRefusal(message, reply)) {
    sockets_.reply(index, routing, reply);
  }
}

void Fleet::run(const Progress& progress) {
  auto nextProgress = start_ + std::chrono::seconds(1);
  while (!stopped_) {
    auto now = BladeAgent::Clock::now();
    if (settings_.runFor.count() > 0 && now - start_ >= settings_.runFor) {
      return;
    }
    serveDue(now);
    if (now >= nextProgress) {
      nextProgress += std::chrono::seconds(1);
      progress(*this);
    }
    auto wait = kLongestPoll;
    if (!due_.empty()) {
      const auto untilDue =
          std::chrono::ceil<std::chrono::milliseconds>(due_.top().time - BladeAgent::Clock::now());
      wait = std::clamp(untilDue, std::chrono::milliseconds(0), kLongestPoll);
    }
    sockets_.poll(wait, [this](auto index, const std::string& routing, msglyr::Message& message) {
      onMessage(index, routing, message);
    });
  }
}

void Fleet::stop() {
  stopped_ = true;
  sockets_.wake();
}

std::vector<const BladeAgent*> Fleet::blades() const {
  std::vector<const BladeAgent*> all;
  all.reserve(blades_.size());
  for (const auto& blade : blades_) {
    all.push_back(blade.get());
  }
  return all;
}

std::chrono::milliseconds Fleet::elapsed() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(BladeAgent::Clock::now() - start_);
}

}  // namespace sma
