#pragma once

#include <mutex>

namespace proc {
class Stimulus;
}

namespace agboot {

/// The service's request for what it needs to begin its work, once for each life of the engine.
/// Thread-safe; nothing here blocks.
class AgBootstrap {
 public:
  /// The process's one.
  static AgBootstrap& get();

  /// Asks the engine, unless it has answered and not gone away since.
  void submitBootstrapRequest();
  /// The service's channel-activity callback: asks again when the engine comes up and an
  /// answer is outstanding: one that went away has forgotten the service, and one that was away
  /// may not have got the question.
  static void bootstrapCb(bool up);
  /// Takes the engine's answer and tells it that the service has begun.
  void processBootstrapResponse(proc::Stimulus& method);

  /// True from the answer on, until the engine goes away.
  bool isDone() const;
  /// For tests: as if nothing had been asked.
  void reset();

 private:
  enum class State { kIdle, kRequested, kDone };

  AgBootstrap() = default;

  mutable std::mutex lock_;
  State state_ = State::kIdle;  // guarded by lock_
};

}  // namespace agboot
