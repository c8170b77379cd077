#pragma once

#include <mutex>

#include "framework/os/WaitableEvent.h"

namespace proc {

/// The service's question to the engine what state the cluster is in. Thread-safe.
class StateRequest {
 public:
  /// What the engine said last; zeroes before.
  struct State {
    unsigned long clusterId = 0;
    unsigned char state = 0;  ///< 1 is up
    unsigned long epoch = 0;
  };

  /// The process's one.
  static StateRequest& get();

  /// Asks. The engine answers with a call, which ends in processStateResponse(). Does not block.
  void requestDme();
  /// Asks again if there was a question and no answer: the engine that got it may be gone.
  void channelUp();
  /// Takes the engine's answer and sets the event.
  void processStateResponse(unsigned long clusterId, unsigned char state, unsigned long epoch);

  State state() const;
  /// Set from the first answer on.
  os::WaitableEvent& event() { return event_; }
  /// As event().wait(): milliseconds, 1 on time-out, 4294967295 for no limit.
  unsigned int wait(unsigned int milliseconds) { return event_.wait(milliseconds); }
  /// For tests: as if nothing had been asked.
  void reset();

 private:
  StateRequest() = default;

  mutable std::mutex lock_;
  State state_;             // guarded by lock_
  bool isAwaited_ = false;  // guarded by lock_; asked and not answered
  os::WaitableEvent event_;
};

}  // namespace proc
