#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "framework/proc/EngineLink.h"
#include "model/serviceorchapi/Methods.h"

namespace blocked_workers {

/// An engine that takes every blade of the lower slots and lets the others wait: a worker of the
/// gateway that registers such a blade is blocked until release().
class HoldingEngine {
 public:
  static constexpr std::uint32_t kHighestTaken = 100;

  explicit HoldingEngine(const std::string& endPoint);

  /// Registrations that wait now. Thread-safe, as is release().
  std::size_t held();
  /// Refuses the registrations that wait.
  void release();

 private:
  using Validation = serviceorchapi::ValidateBladeStateMe;
  struct Held {
    proc::EngineLink::PeerId peer;
    std::unique_ptr<Validation> call;
  };

  void take(proc::EngineLink::PeerId peer, const unsigned char* bytes, std::size_t size);
  void validate(proc::EngineLink::PeerId peer, std::unique_ptr<Validation> call);
  void tellState(proc::EngineLink::PeerId peer);

  std::mutex mutex_;
  std::vector<Held> held_;  // guarded by mutex_
  proc::EngineLink link_;   // last: its thread uses the rest
};

}  // namespace blocked_workers
