#include "sma/Fleet.h"

#include <algorithm>
#include <iostream>
#include <stdexcept>

#include "sma/base/Listening.h"

namespace sma {
namespace {

constexpr std::chrono::milliseconds kLongestPoll{100};
/// Blades that do not listen still have to name a port: one below the ephemeral range.
constexpr std::uint32_t kSilentPorts = 10'000;

std::uint32_t portOf(std::uint32_t slot, std::uint32_t listenBase) {
  return listenBase == 0 ? kListenBase + slot % kSilentPorts : listenBase + slot;
}

std::string endPointOf(std::uint32_t port) {
  return "tcp://127.0.0.1:" + std::to_string(port);
}

constexpr std::chrono::milliseconds kReconnectPause{50};
constexpr unsigned kAttemptsBeforeWord = 40;

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
  blade.membership.ip = settings_.ip;
  blade.membership.port = portOf(slot, settings_.listenBase);
  blade.membership.beat = settings_.beat;
  blade.membership.beatWait = std::max(settings_.beat, std::chrono::milliseconds(5000));
  blade.seed = settings_.seed * 1'000'003 + slot;
  blade.apps = settings_.apps;
  blade.reports = reportsOf(blade.seed);
  blade.commands = settings_.commands;
  blade.commands.seed = blade.seed;
  scenario.apply(blade);
  if (settings_.state != nullptr) {
    blade.journal = [state = settings_.state, slot](const Memory& memory) {
      state->append(slot, memory);
    };
  }

  const std::size_t number = seats_.size();
  const std::uint32_t port = blade.membership.port;
  const auto startDelay = spread(blade.seed, settings_.beat);
  auto agent = std::make_unique<BladeAgent>(std::move(blade), start_ + startDelay);
  if (settings_.state != nullptr) {
    for (const Memory& memory : settings_.state->take(slot)) {
      agent->recall(memory);
    }
  }
  seats_.push_back({std::move(agent), settings_.listenBase == 0 ? "" : endPointOf(port)});
  connect(number);
  schedule(number);
}

// --- connections, which a dead blade has not

void Fleet::use(msglyr::DealerSet::Index index, const Use& use) {
  useOf_.resize(std::max(useOf_.size(), index + 1));
  useOf_[index] = use;
}

void Fleet::connect(std::size_t blade) {
  Seat& seat = seats_[blade];
  if (!seat.endPoint.empty()) {
    seat.listener = sockets_.addListener(seat.endPoint);
    use(*seat.listener, {blade, true});
  }
  seat.socket = sockets_.add(settings_.gateway);
  use(*seat.socket, {blade, false});
}

void Fleet::disconnect(std::size_t blade) {
  for (auto* socket : {&seats_[blade].socket, &seats_[blade].listener}) {
    if (*socket) {
      sockets_.remove(**socket);
      socket->reset();
    }
  }
}

// The transport gives a port back a moment after its socket was closed, so a blade that died for a
// short time may have to stay dead a little longer.
bool Fleet::reconnect(std::size_t blade, BladeAgent::TimePoint now) {
  Seat& seat = seats_[blade];
  try {
    connect(blade);
    seat.attempts = 0;
    return true;
  } catch (const std::runtime_error& error) {
    disconnect(blade);
    if (++seat.attempts == kAttemptsBeforeWord) {
      std::cerr << "sma-sim: the blade in slot " << seat.agent->slot()
                << " cannot come back yet: " << error.what() << '\n';
    }
    seat.agent->die(now, kReconnectPause);
    return false;
  }
}

// --- the loop

void Fleet::schedule(std::size_t blade) {
  Seat& seat = seats_[blade];
  const auto time = seat.agent->due();
  if (time == seat.scheduled) {
    return;
  }
  seat.scheduled = time;
  due_.push({time, blade});
}

void Fleet::serveDue(BladeAgent::TimePoint now) {
  while (!due_.empty() && due_.top().time <= now) {
    const Due due = due_.top();
    due_.pop();
    Seat& seat = seats_[due.blade];
    if (due.time != seat.scheduled) {
      continue;  // rescheduled since
    }
    seat.scheduled = {};
    serve(due.blade, now);
    schedule(due.blade);
  }
}

void Fleet::serve(std::size_t blade, BladeAgent::TimePoint now) {
  Seat& seat = seats_[blade];
  if (!seat.socket && !seat.agent->isDead(now) && !reconnect(blade, now)) {
    return;
  }
  seat.agent->onTime(now, [this, &seat](const msglyr::Message& message) {
    return seat.socket && sockets_.send(*seat.socket, message);
  });
  if (seat.agent->isDead(now)) {
    disconnect(blade);
  } else {
    sendReplies(blade, now);
  }
}

void Fleet::sendReplies(std::size_t blade, BladeAgent::TimePoint now) {
  Seat& seat = seats_[blade];
  for (const PeerMessage& reply : seat.agent->commandReplies(now)) {
    if (seat.listener) {
      sockets_.reply(*seat.listener, reply.peer, reply.message);
    }
  }
}

void Fleet::onMessage(msglyr::DealerSet::Index index, const std::string& routing,
                      msglyr::Message& message) {
  const Use use = useOf_[index];
  BladeAgent& blade = *seats_[use.blade].agent;
  const auto now = BladeAgent::Clock::now();
  if (use.listens) {
    blade.onCommand(routing, message, now);
    sendReplies(use.blade, now);
  } else {
    blade.onMessage(message, now);
  }
  schedule(use.blade);
}

std::uint64_t Fleet::commands() const {
  std::uint64_t sum = 0;
  for (const Seat& seat : seats_) {
    sum += seat.agent->desk().received();
  }
  return sum;
}

void Fleet::run(const Progress& progress) {
  try {
    loop(progress);
  } catch (...) {
    endTasks();
    throw;
  }
  endTasks();
}

void Fleet::loop(const Progress& progress) {
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
    doTasks();
  }
}

// --- what others ask for

bool Fleet::onLoop(std::function<void()> task) {
  std::packaged_task<void()> packaged(std::move(task));
  auto done = packaged.get_future();
  {
    const std::lock_guard lock(tasksLock_);
    if (!takesTasks_) {
      return false;
    }
    tasks_.push_back(std::move(packaged));
  }
  sockets_.wake();
  try {
    done.get();
    return true;
  } catch (const std::future_error&) {  // dropped by endTasks()
    return false;
  }
}

void Fleet::doTasks() {
  std::vector<std::packaged_task<void()>> tasks;
  {
    const std::lock_guard lock(tasksLock_);
    tasks.swap(tasks_);
  }
  for (auto& task : tasks) {
    task();
  }
}

void Fleet::endTasks() {
  const std::lock_guard lock(tasksLock_);
  takesTasks_ = false;
  tasks_.clear();
}

std::optional<std::size_t> Fleet::seatOf(std::uint32_t slot) const {
  const auto found = std::lower_bound(
      seats_.begin(), seats_.end(), slot,
      [](const Seat& seat, std::uint32_t wanted) { return seat.agent->slot() < wanted; });
  const bool isThere = found != seats_.end() && found->agent->slot() == slot;
  return isThere ? std::optional(static_cast<std::size_t>(found - seats_.begin())) : std::nullopt;
}

const BladeAgent* Fleet::blade(std::uint32_t slot) const {
  const auto seat = seatOf(slot);
  return seat ? seats_[*seat].agent.get() : nullptr;
}

void Fleet::addFault(std::uint32_t slot, const CommandFault& fault) {
  if (const auto seat = seatOf(slot)) {
    seats_[*seat].agent->addFault(fault);
  }
}

void Fleet::clearFaults(std::uint32_t slot) {
  if (const auto seat = seatOf(slot)) {
    seats_[*seat].agent->clearFaults(BladeAgent::Clock::now());
    schedule(*seat);
  }
}

void Fleet::die(std::uint32_t slot, BladeAgent::Duration lasts) {
  if (const auto seat = seatOf(slot)) {
    seats_[*seat].agent->die(BladeAgent::Clock::now(), lasts);
    disconnect(*seat);
    schedule(*seat);
  }
}

void Fleet::stop() {
  stopped_ = true;
  sockets_.wake();
}

std::vector<const BladeAgent*> Fleet::blades() const {
  std::vector<const BladeAgent*> all;
  all.reserve(seats_.size());
  for (const Seat& seat : seats_) {
    all.push_back(seat.agent.get());
  }
  return all;
}

std::chrono::milliseconds Fleet::elapsed() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(BladeAgent::Clock::now() - start_);
}

}  // namespace sma
