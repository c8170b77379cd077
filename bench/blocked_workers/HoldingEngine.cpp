#include "bench/blocked_workers/HoldingEngine.h"

#include <utility>

#include "framework/method/Wire.h"
#include "model/agboot/Methods.h"
#include "model/dmeapi/Methods.h"

namespace blocked_workers {

HoldingEngine::HoldingEngine(const std::string& endPoint) : link_(endPoint) {
  link_.start(
      [this](auto peer, const unsigned char* bytes, std::size_t size) { take(peer, bytes, size); });
}

void HoldingEngine::take(proc::EngineLink::PeerId peer, const unsigned char* bytes,
                         std::size_t size) {
  if (auto call = method::decodeCall<Validation>(bytes, size)) {
    validate(peer, std::move(call));
  } else if (method::decodeCall<dmeapi::ClusterStateRequestMe>(bytes, size)) {
    tellState(peer);
  } else if (const auto boot = method::decodeCall<agboot::BootstrapMe>(bytes, size)) {
    link_.send(peer, method::encodeAnswer(*boot, {}), true);
  }
}

void HoldingEngine::validate(proc::EngineLink::PeerId peer, std::unique_ptr<Validation> call) {
  if (std::get<0>(call->in) <= kHighestTaken) {
    link_.send(peer, method::encodeAnswer(*call, {"token", true, false}), true);
    return;
  }
  const std::lock_guard guard(mutex_);
  held_.push_back({peer, std::move(call)});
}

void HoldingEngine::tellState(proc::EngineLink::PeerId peer) {
  constexpr std::uint8_t kUp = 1;
  dmeapi::ClusterStateMe state;
  state.in = {1, kUp, 1};
  state.setResponseRequired(false);
  link_.send(peer, method::encodeCall(state), true);
}

std::size_t HoldingEngine::held() {
  const std::lock_guard guard(mutex_);
  return held_.size();
}

void HoldingEngine::release() {
  const std::lock_guard guard(mutex_);
  for (const Held& each : held_) {
    link_.send(each.peer, method::encodeFailure(*each.call, {1, 1003, "released"}), true);
  }
  held_.clear();
}

}  // namespace blocked_workers
