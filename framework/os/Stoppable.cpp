#include "framework/os/Stoppable.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace os {
namespace {

/// Everything that `stopAll` knows. Never destroyed: pools may outlive main.
struct Registry {
  static Registry& instance() {
    static Registry* const registry = new Registry;
    return *registry;
  }

  std::mutex mutex;
  std::condition_variable changed;
  // Guarded by mutex.
  std::vector<Stoppable*> members;
  Stoppable* stopping = nullptr;  // the one that stopAll is inside of
};

}  // namespace

Stoppable::Stoppable(Stage stage) : stage_(stage) {}

void Stoppable::enlist() {
  Registry& registry = Registry::instance();
  const std::lock_guard<std::mutex> guard(registry.mutex);
  registry.members.push_back(this);
}

void Stoppable::withdraw() {
  Registry& registry = Registry::instance();
  std::unique_lock<std::mutex> lock(registry.mutex);
  std::erase(registry.members, this);
  registry.changed.wait(lock, [this, &registry] { return registry.stopping != this; });
}

std::size_t Stoppable::stopStage(Stage stage, Clock::TimePoint deadline) {
  Registry& registry = Registry::instance();
  std::unique_lock<std::mutex> lock(registry.mutex);
  std::size_t busy = 0;
  const std::vector<Stoppable*> candidates = registry.members;
  for (Stoppable* const member : candidates) {
    const bool isAlive = std::find(registry.members.begin(), registry.members.end(), member) !=
                         registry.members.end();
    if (!isAlive || member->stage_ != stage) {
      continue;
    }
    registry.stopping = member;
    lock.unlock();
    busy += member->stop(deadline);
    lock.lock();
    registry.stopping = nullptr;
    registry.changed.notify_all();
  }
  return busy;
}

std::size_t stopAll(std::chrono::milliseconds limit) {
  const Clock::TimePoint deadline = Clock::instance().now() + limit;
  std::size_t busy = 0;
  for (const auto stage :
       {Stoppable::Stage::kTimers, Stoppable::Stage::kQueues, Stoppable::Stage::kPools}) {
    busy += Stoppable::stopStage(stage, deadline);
  }
  return busy;
}

}  // namespace os
