#pragma once

#include "framework/os/WaitableEvent.h"

namespace proc {

/// The first item on a service's queue: once it has come through queue and pool, what arrives will.
class InitStimulus {
 public:
  /// Puts it on the queue of Svc::instance, or handles it on the spot when the service has no
  /// queue. Does not block.
  static void issue();
  /// Set when it came through.
  static os::WaitableEvent& processed();
};

}  // namespace proc
