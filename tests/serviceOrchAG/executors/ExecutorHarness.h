#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "framework/finj/FinjManager.h"
#include "framework/method/Config.h"
#include "serviceOrchAG/executors/ExecutorFrame.h"

namespace zan_serviceOrchAG {

/// A command as an executor sent it.
struct SentCommand {
  std::string slot;
  std::string document;
  std::string command;
  bool operator==(const SentCommand&) const = default;
};

/// Stands in for the blades while it lives: every command ends with `status`. One at a time.
class ScriptedBlades {
 public:
  explicit ScriptedBlades(unsigned int status = 100);
  ~ScriptedBlades();
  ScriptedBlades(const ScriptedBlades&) = delete;
  ScriptedBlades& operator=(const ScriptedBlades&) = delete;

  const std::vector<SentCommand>& sent() const { return sent_; }

 private:
  static unsigned int take(std::string slot, std::string document, std::string command);
  static inline ScriptedBlades* instance_ = nullptr;

  const SendCommand before_;
  const unsigned int status_;
  std::vector<SentCommand> sent_;
};

/// Sets an activity at a fault injection hook for as long as it lives.
class ActivityAt {
 public:
  ActivityAt(std::string hook, std::int32_t result, std::int32_t lBits = 0);
  ~ActivityAt();
  ActivityAt(const ActivityAt&) = delete;
  ActivityAt& operator=(const ActivityAt&) = delete;

 private:
  const std::string hook_;
};

/// One of the executors, with a target that makes it send its command to slot 3.
struct Executor {
  const char* name;      ///< of the golden file, too
  const char* function;  ///< as it stands in the log
  const char* hookStem;  ///< null when it has no hooks
  const char* command;   ///< as it is sent

  /// The target's configuration: a class of 0 when it takes none.
  method::Config (*target)();
  /// Runs the executor on `stage` (made by makeStage) with this target.
  void (*run)(proc::Stimulus& stage, const method::Config& target);
  std::unique_ptr<proc::Stimulus> (*makeStage)();
};

/// All that send a command. Starting is in it twice: "startVdp" starts an application with cluster
/// links and an internal management interface.
const std::vector<Executor>& executors();
const Executor& executorNamed(const std::string& name);

/// Takes away what travels along with the target.
void dropChildren(method::Config& target);

/// Sets a property of the application, which is the only one that travels along with the target.
template <auto kProperty, class T>
void setOfApp(method::Config& target, T value) {
  method::Config app = target.children().front();
  app.set(kProperty->id, method::Value(std::move(value)));
  dropChildren(target);
  target.addChild(std::move(app));
}

/// What one run came to.
struct Outcome {
  bool hasFailed = false;
  proc::Stimulus::Failure failure;
  bool isAnswered = true;
};
Outcome runExecutor(const Executor& executor, const method::Config& target);
inline Outcome runExecutor(const Executor& executor) {
  return runExecutor(executor, executor.target());
}

/// A file of the folder golden/, without the line feed that may end it.
std::string golden(const std::string& name);

/// The document of an executor on a platform: "NAME.PLATFORM.xml", or "NAME.xml" when the platform
/// makes no difference.
std::string goldenOn(const std::string& platform, const std::string& name);

/// The document that the executor sends for this target; empty when it sends none.
std::string sentDocument(const std::string& executor, const method::Config& target);

}  // namespace zan_serviceOrchAG
