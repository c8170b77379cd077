#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "dme/chassis/Chassis.h"
#include "dme/chassis/TimeSetting.h"
#include "dme/jobs/JobTable.h"
#include "dme/reports/BladeEvents.h"
#include "dme/running/StageCall.h"
#include "dme/store/ObjectStore.h"
#include "framework/base/BioStream.h"
#include "framework/base/Buffer.h"
#include "framework/proc/Stimulus.h"

namespace dme {

/// The calls that ask the gateway to give commands to blades: where they go, and of which job each
/// answer tells.
///
/// Not thread-safe, save send().
class GatewayCalls {
 public:
  using PeerId = BladeEvents::PeerId;
  /// Hands one stimulus over for a peer. False when it was dropped.
  using Send = std::function<bool(PeerId peer, const base::OBioStream& bytes, bool urgent)>;

  struct Call {
    PeerId peer;
    base::OBioStream bytes;
  };

  /// Everything outlives this.
  GatewayCalls(ObjectStore& store, const Chassis& chassis, const TimeSetting& time, Send send);

  /// Something came from this peer, sent under this address: calls go there from now on. True when
  /// they went elsewhere, or nowhere, before.
  bool heard(PeerId peer, const proc::Address& from);
  bool isConnected() const { return gateway_.has_value(); }

  /// Makes the call that carries the job out, and waits for its answer under a new cookie of the
  /// job. A gateway is connected, the job's target is there.
  std::shared_ptr<const Call> make(Job& job);
  /// Hands the call over; false when it was dropped. Thread-safe.
  bool send(const Call& call) const { return send_(call.peer, call.bytes, true); }

  /// The job whose call has this cookie; nothing when no answer to it is waited for.
  std::optional<std::uint64_t> jobOf(const base::Buffer& cookie) const;
  /// No answer to the job's call is waited for any longer.
  void forget(Job& job);

 private:
  struct Gateway {
    PeerId peer;
    proc::Address address;
  };

  const StageCall stages_;
  const Send send_;
  std::optional<Gateway> gateway_;
  std::unordered_map<std::string, std::uint64_t> byCookie_;  // the jobs whose answer is awaited
};

}  // namespace dme
