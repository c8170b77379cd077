#pragma once

#include <cstdint>

#include "dme/store/ObjectStore.h"
#include "framework/base/Buffer.h"
#include "framework/proc/Stimulus.h"

namespace dme {

struct OperationReport;

/// What blades and the gateway tell that others than the reports' keepers go by. Each is called
/// when what is told has been staged in the store, before it is committed.
class BladeEvents {
 public:
  using PeerId = std::uint64_t;

  virtual ~BladeEvents() = default;

  /// Something came from this peer, sent under this address.
  virtual void heard(PeerId peer, const proc::Address& from) = 0;
  /// The answer to a call of the engine's own: null for success. False when there is no such call,
  /// or it was answered before.
  virtual bool answered(const base::Buffer& cookie, const proc::Stimulus::Failure* failure) = 0;
  /// A blade reported on a command about this instance or slot.
  virtual void progressed(const Object& subject, const OperationReport& report) = 0;
  /// The slot's blade reported its application instances.
  virtual void instancesReported(std::uint32_t slot) = 0;
  /// The slot's blade registered, and is valid or not.
  virtual void registered(std::uint32_t slot, bool isValid) = 0;
};

}  // namespace dme
