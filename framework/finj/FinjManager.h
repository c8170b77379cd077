#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace finj {

/// What is to happen at a hook.
struct Activity {
  /// The bits that executeActivities() returns.
  std::int32_t result = 0;
  /// Values for the variables that the hook's thread has bound, by name.
  std::map<std::string, std::int32_t> assignments;
  /// How often it happens; 0 for ever.
  unsigned times = 0;
  /// How long the hook's thread is held before anything else happens.
  std::chrono::milliseconds delay{0};
};

/// Fault injection: code asks at named hooks whether something is to go wrong there. Activities are
/// set at run time, by an administrator or a test. Thread-safe.
class FinjManager {
 public:
  /// The process's one.
  static FinjManager& getInstance();

  /// Carries out the activity of a hook on the calling thread and returns its bits; 0 when none is
  /// set. Costs one relaxed load while no hook has one. Blocks for the activity's delay; other
  /// hooks, and changes of activities, do not wait for that.
  std::int32_t executeActivities(std::string_view hook);

  /// Binds a variable of the calling thread by name, so that an activity can write to it, in the
  /// place of the one bound under this name. It must be unbound, or its thread be done with hooks,
  /// before it dies.
  void setLocalVar(std::string_view name, std::int32_t* variable);
  /// Unbinds every variable of the calling thread.
  void dropLocalVars();
  class Frame;

  /// Sets the activity of a hook in the place of the one it has.
  void setActivity(const std::string& hook, const Activity& activity);
  /// Takes the activity of a hook away. False when it has none.
  bool removeActivity(const std::string& hook);
  void clear();
  /// What is set, by the hooks' names. An activity for a number of times has those that are left.
  std::map<std::string, Activity> activities() const;

 private:
  FinjManager() = default;

  mutable std::mutex lock_;
  std::map<std::string, Activity, std::less<>> activities_;  // guarded by lock_
  std::atomic<bool> hasActivities_{false};                   // written under lock_
};

/// Unbinds the calling thread's variables at the end of a scope: declared before the variables that
/// are bound in it.
class [[nodiscard]] FinjManager::Frame {
 public:
  Frame() = default;
  ~Frame() { FinjManager::getInstance().dropLocalVars(); }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;
};

}  // namespace finj
