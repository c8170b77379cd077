#include "framework/finj/FinjManager.h"

#include <condition_variable>
#include <functional>

#include "framework/os/Clock.h"

namespace finj {

namespace {

using Variables = std::map<std::string, std::int32_t*, std::less<>>;

/// The variables that the calling thread has bound.
Variables& variablesHere() {
  thread_local Variables variables;
  return variables;
}

void waitFor(std::chrono::milliseconds delay) {
  if (delay.count() <= 0) {
    return;
  }
  std::mutex mutex;
  std::condition_variable never;
  std::unique_lock lock(mutex);
  os::Clock& clock = os::Clock::instance();
  clock.waitUntil(never, lock, clock.now() + delay, [] { return false; });
}

void assign(const std::map<std::string, std::int32_t>& assignments) {
  for (const auto& [name, value] : assignments) {
    const auto variable = variablesHere().find(name);
    if (variable != variablesHere().end()) {
      *variable->second = value;
    }
  }
}

}  // namespace

FinjManager& FinjManager::getInstance() {
  static FinjManager& manager = *new FinjManager;
  return manager;
}

std::int32_t FinjManager::executeActivities(std::string_view hook) {
  if (!hasActivities_.load(std::memory_order_relaxed)) {
    return 0;
  }
  Activity activity;
  {
    const std::lock_guard guard(lock_);
    const auto found = activities_.find(hook);
    if (found == activities_.end()) {
      return 0;
    }
    activity = found->second;
    if (found->second.times > 0 && --found->second.times == 0) {
      activities_.erase(found);
      hasActivities_ = !activities_.empty();
    }
  }
  waitFor(activity.delay);
  assign(activity.assignments);
  return activity.result;
}

void FinjManager::setLocalVar(std::string_view name, std::int32_t* variable) {
  if (variable == nullptr) {
    variablesHere().erase(std::string(name));
  } else {
    variablesHere().insert_or_assign(std::string(name), variable);
  }
}

void FinjManager::dropLocalVars() {
  variablesHere().clear();
}

void FinjManager::setActivity(const std::string& hook, const Activity& activity) {
  const std::lock_guard guard(lock_);
  activities_[hook] = activity;
  hasActivities_ = true;
}

bool FinjManager::removeActivity(const std::string& hook) {
  const std::lock_guard guard(lock_);
  const bool isRemoved = activities_.erase(hook) != 0;
  hasActivities_ = !activities_.empty();
  return isRemoved;
}

void FinjManager::clear() {
  const std::lock_guard guard(lock_);
  activities_.clear();
  hasActivities_ = false;
}

std::map<std::string, Activity> FinjManager::activities() const {
  const std::lock_guard guard(lock_);
  return {activities_.begin(), activities_.end()};
}

}  // namespace finj
