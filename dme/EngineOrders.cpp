#include "dme/Engine.h"

#include <utility>

// What an operator wants done: each under the engine's lock, and a refusal told outside of it.

namespace dme {

namespace {

Refusal stopping() {
  return {Refusal::Reason::kNotStored, "the engine is stopping", "try again when it runs"};
}

}  // namespace

// What an operator was told of may not have reached the engine's thread yet.
void Engine::catchUp() {
  if (!isStopping_) {
    jobs_.catchUp();
  }
}

template <class T, class Work>
void Engine::decide(const Done<T>& done, Work work) {
  Granted<void> granted;
  {
    const std::lock_guard lock(state_);
    catchUp();
    granted = isStopping_ ? tl::unexpected(stopping()) : work();
  }
  if (!granted && done) {
    done(tl::unexpected(std::move(granted.error())));
  }
}

void Engine::order(const JobOrder& order, Done<JobView> done) {
  decide(done, [&] { return jobs_.order(order, done); });
}

Granted<JobView> Engine::wouldOrder(const JobOrder& order) {
  const std::lock_guard lock(state_);
  catchUp();
  return jobs_.wouldOrder(order);
}

void Engine::cancelJob(std::uint64_t id, Done<JobView> done) {
  decide(done, [&] { return jobs_.cancel(id, done); });
}

std::vector<JobView> Engine::jobs(const JobFilter& filter) const {
  return jobs_.board().list(filter);
}

std::optional<JobView> Engine::job(std::uint64_t id) const {
  return jobs_.board().find(id);
}

Engine::WatchId Engine::watchJob(std::uint64_t id, std::uint64_t revision,
                                 std::function<void(const JobView&)> changed) {
  return jobs_.board().watch(id, revision, std::move(changed));
}

void Engine::unwatchJob(WatchId id) {
  jobs_.board().unwatch(id);
}

void Engine::createApp(std::uint32_t slot, std::unique_ptr<mo::Mo> instance, Done<AppView> done) {
  decide(done, [&] { return jobs_.createApp(slot, *instance, done); });
}

void Engine::deleteApp(const std::string& id, Done<AppView> done) {
  decide(done, [&] { return jobs_.deleteApp(id, done); });
}

Granted<AppView> Engine::wouldDeleteApp(const std::string& id) {
  const std::lock_guard lock(state_);
  catchUp();
  return jobs_.wouldDeleteApp(id);
}

std::vector<AppView> Engine::apps(std::optional<std::uint32_t> slot) const {
  const std::lock_guard lock(state_);
  return jobs_.apps(slot);
}

std::optional<AppView> Engine::app(const std::string& id) const {
  const std::lock_guard lock(state_);
  return jobs_.app(id);
}

Granted<Equipment> Engine::equipment(EquipmentPlace place) const {
  const std::lock_guard lock(state_);
  return jobs_.equipment(place);
}

void Engine::describe(EquipmentPlace place, const EquipmentChange& change, Done<Equipment> done) {
  decide(done, [&] { return jobs_.describe(place, change, done); });
}

Granted<Equipment> Engine::wouldDescribe(EquipmentPlace place,
                                         const EquipmentChange& change) const {
  const std::lock_guard lock(state_);
  return jobs_.wouldDescribe(place, change);
}

std::string Engine::timeZone() const {
  const std::lock_guard lock(state_);
  return jobs_.timeZone();
}

void Engine::setTimeZone(const std::string& zone, Done<std::vector<JobView>> done) {
  decide(done, [&] { return jobs_.setTimeZone(zone, done); });
}

}  // namespace dme
