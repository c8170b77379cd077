#include "dme/Engine.h"

#include <algorithm>
#include <exception>
#include <future>
#include <utility>

#include "framework/base/SvcConfigParams.h"
#include "framework/core_log/Log.h"

namespace dme {

namespace {

using Deadline = std::optional<os::Clock::TimePoint>;

Deadline earlier(const Deadline& one, const Deadline& other) {
  return one && other ? std::min(*one, *other) : (one ? one : other);
}

}  // namespace

EngineConfig EngineConfig::from(const base::SvcConfigParams& params) {
  return {params.getStateDir().str(),
          params.getDmeChassis().str(),
          params.getDmeEndpoint().str(),
          {params.getDmeHeartbeatInterval(), params.getDmeHeartbeatMisses(), params.getDmeGrace()},
          systemTime,
          {params.getDmeSettleAfter(),
           {!params.isQvm1() && !params.isQvm2(), !params.isQvm1() && !params.isQvm2()}}};
}

Result<std::unique_ptr<Engine>> Engine::open(const EngineConfig& config) {
  Result<std::unique_ptr<ObjectStore>> store = ObjectStore::open(config.stateDir);
  if (!store) {
    return tl::unexpected<Error>(store.error());
  }
  std::optional<base::ChassisDescription> description;
  if (!config.chassisFile.empty() && !Chassis::isIn(**store)) {
    auto read = base::readChassisFile(config.chassisFile);
    if (!read) {
      return failure(std::move(read.error()));
    }
    description = std::move(*read);
  }
  std::unique_ptr<Engine> engine(new Engine(config, std::move(*store), description));
  if (const Result<void> stored = engine->commitAndWait(); !stored) {
    return failure(config.stateDir + " cannot be written to (" + stored.error().text +
                       "): free some space on its file system",
                   stored.error().code);
  }
  return engine;
}

Engine::Engine(EngineConfig config, std::unique_ptr<ObjectStore> store,
               const std::optional<base::ChassisDescription>& description)
    : config_(std::move(config)),
      store_(std::move(store)),
      chassis_(*store_, description),
      monitor_(config_.monitor),
      server_(
          *store_, chassis_, monitor_,
          [this](proc::EngineLink::PeerId peer, const base::OBioStream& bytes, bool urgent) {
            return link_->send(peer, bytes, urgent);
          },
          config_.wallClock),
      jobs_(
          *store_, chassis_, server_.instances(), monitor_, config_.jobs, config_.wallClock,
          [this](proc::EngineLink::PeerId peer, const base::OBioStream& bytes, bool urgent) {
            return link_->send(peer, bytes, urgent);
          },
          [this] { inbox_.wake(); }) {
  server_.listen(jobs_.events());
}

Engine::~Engine() {
  stop();
}

Result<void> Engine::commitAndWait() {
  std::promise<Result<void>> stored;
  store_->commit([&stored](const Result<void>& outcome) { stored.set_value(outcome); });
  return stored.get_future().get();
}

Result<void> Engine::start() {
  try {
    auto link = std::make_unique<proc::EngineLink>(config_.endPoint);
    const std::lock_guard lock(state_);
    link_ = std::move(link);
  } catch (const std::exception& error) {
    return failure(error.what());
  }
  expectKnownBlades();
  thread_ = std::thread([this] { run(); });
  link_->start([this](proc::EngineLink::PeerId peer, const unsigned char* bytes, std::size_t size) {
    inbox_.push(peer, bytes, size);
  });
  core_log::logPrintf(
      "start", core_log::serviceLevel(), 5, "engine at %s: start %llu on this database, %zu slots",
      link_->endPoint().c_str(), static_cast<unsigned long long>(status().epoch), status().slots);
  return {};
}

void Engine::expectKnownBlades() {
  const std::lock_guard lock(state_);
  const os::Clock::TimePoint now = os::Clock::instance().now();
  for (const Object* slot : chassis_.slots()) {
    if (slot->get(sd::SlotMo::kAdmission) == static_cast<std::uint8_t>(sd::Admission::kValid)) {
      monitor_.expect(slot->get(sd::SlotMo::kNumber), now);
    }
  }
  if (monitor_.isWatching()) {
    nextJudgement_ = now + monitor_.judgeEvery();
  }
}

void Engine::stop() {
  inbox_.close();
  if (thread_.joinable()) {
    thread_.join();
  }
  {
    const std::lock_guard lock(state_);
    isStopping_ = true;
  }
  settleLast();
  store_->close();  // the answers to what it writes still leave
  if (link_ != nullptr) {
    link_->close();
  }
}

// What was refused because the disk did not take it must not get there with what is written last.
void Engine::settleLast() {
  commitAndWait();  // whoever had to be told has been
  try {
    const std::lock_guard lock(state_);
    jobs_.catchUp();
  } catch (const std::exception& error) {
    core_log::logPrintf("stop", core_log::serviceLevel(), 8, "jobs are left as they are: %s",
                        error.what());
  }
}

std::string Engine::endPoint() const {
  const std::lock_guard lock(state_);
  return link_ != nullptr ? link_->endPoint() : "";
}

void Engine::run() {
  StimulusBatch batch;
  do {
    process(batch);
  } while (inbox_.take(batch, earlier(nextJudgement_, nextTick_)));
}

void Engine::process(const StimulusBatch& batch) {
  const std::lock_guard lock(state_);
  const os::Clock::TimePoint now = os::Clock::instance().now();
  for (const StimulusBatch::Entry& entry : batch.entries()) {
    handle(batch, entry, now);
  }
  tick(now);
  judge(now);
}

void Engine::handle(const StimulusBatch& batch, const StimulusBatch::Entry& entry,
                    os::Clock::TimePoint now) {
  try {
    const auto bytes = batch.bytesOf(entry);
    server_.handle(entry.peer, bytes.data(), bytes.size(), now);
  } catch (const std::exception& error) {
    core_log::logPrintf("handle", core_log::serviceLevel(), 8, "stimulus of %zu bytes dropped: %s",
                        entry.size, error.what());
  }
}

void Engine::tick(os::Clock::TimePoint now) {
  server_.tick(now);
  try {
    jobs_.tick(now);
  } catch (const std::exception& error) {
    core_log::logPrintf("tick", core_log::serviceLevel(), 8, "jobs are held up: %s", error.what());
  }
  nextTick_ = earlier(jobs_.deadline(), server_.deadline());
}

void Engine::judge(os::Clock::TimePoint now) {
  if (!monitor_.isWatching()) {
    nextJudgement_.reset();
    return;
  }
  if (nextJudgement_ && now < *nextJudgement_) {
    return;
  }
  // A process that stood still has heartbeats waiting: it hears them before it judges, once.
  wasHeldUp_ = !wasHeldUp_ && nextJudgement_ && now - *nextJudgement_ > monitor_.mostDelay();
  if (!wasHeldUp_) {
    monitor_.judge(now);
  }
  nextJudgement_ = now + (wasHeldUp_ ? monitor_.hearFor() : monitor_.judgeEvery());
}

SlotView Engine::viewOf(const Object& slot, os::Clock::TimePoint now) const {
  SlotView view;
  view.slot = slot.get(sd::SlotMo::kNumber);
  view.name = slot.get(sd::SlotMo::kLabel).str();
  if (const auto equipment = jobs_.equipment(view.slot)) {
    view.model = equipment->model;
    view.serial = equipment->serial;
  }
  view.admission = static_cast<sd::Admission>(slot.get(sd::SlotMo::kAdmission));
  view.hasToken = !slot.get(sd::SlotMo::kToken).empty();
  view.runningVersion = slot.get(sd::SlotMo::kRunningVersion).str();
  view.runningImage = slot.get(sd::SlotMo::kRunningImage).str();
  view.runningImageSize = slot.get(sd::SlotMo::kRunningImageSize);
  view.cachedVersion = slot.get(sd::SlotMo::kCachedVersion).str();
  view.cachedImage = slot.get(sd::SlotMo::kCachedImage).str();
  view.cachedImageSize = slot.get(sd::SlotMo::kCachedImageSize);
  view.registrations = slot.get(sd::SlotMo::kRegistrations);
  if (const BladeMonitor::Blade* blade = monitor_.find(view.slot)) {
    view.isWatched = blade->isWatched;
    view.state = blade->state;
    view.lastCount = blade->lastCount;
    view.lastTimer = blade->lastTimer;
    view.beats = blade->beats;
    view.duplicates = blade->duplicates;
    view.missed = blade->missed;
    view.restarts = blade->restarts;
    if (blade->beats > 0) {
      view.sinceLastBeat =
          std::chrono::duration_cast<std::chrono::milliseconds>(now - blade->lastBeat);
    }
  }
  return view;
}

std::vector<SlotView> Engine::slots() const {
  const std::lock_guard lock(state_);
  const os::Clock::TimePoint now = os::Clock::instance().now();
  std::vector<SlotView> views;
  for (const Object* slot : chassis_.slots()) {
    views.push_back(viewOf(*slot, now));
  }
  return views;
}

std::optional<SlotView> Engine::slot(std::uint32_t number) const {
  const std::lock_guard lock(state_);
  const Object* slot = chassis_.slot(number);
  if (slot == nullptr) {
    return std::nullopt;
  }
  return viewOf(*slot, os::Clock::instance().now());
}

EngineStatus Engine::status() const {
  const std::lock_guard lock(state_);
  EngineStatus status;
  status.clusterId = chassis_.clusterId();
  status.epoch = chassis_.epoch();
  status.slots = chassis_.slots().size();
  status.watched = monitor_.watched();
  status.alive = monitor_.inState(BladeMonitor::State::kAlive);
  status.late = monitor_.inState(BladeMonitor::State::kLate);
  status.silent = monitor_.inState(BladeMonitor::State::kSilent);
  status.areActionsHeld = monitor_.areActionsHeld();
  status.alarms = monitor_.alarms();
  status.dropped = inbox_.dropped() + (link_ != nullptr ? link_->dropped() : 0);
  status.methods = server_.counters();
  status.commits = store_->counters();
  return status;
}

std::vector<ObjectView> Engine::model(const mo::Dn& dn) const {
  const std::lock_guard lock(state_);
  return store_->view(dn);
}

}  // namespace dme
