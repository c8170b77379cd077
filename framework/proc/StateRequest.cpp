#include "framework/proc/StateRequest.h"

#include "framework/proc/EngineCall.h"

namespace proc {

StateRequest& StateRequest::get() {
  static StateRequest& request = *new StateRequest;
  return request;
}

void StateRequest::requestDme() {
  {
    const std::lock_guard guard(lock_);
    isAwaited_ = true;
  }
  callEngine(kClusterStateRequestClass, Stimulus::kIntentNone, true, Address{26, 1, 4, 4});
}

void StateRequest::channelUp() {
  bool isAwaited = false;
  {
    const std::lock_guard guard(lock_);
    isAwaited = isAwaited_;
  }
  if (isAwaited) {
    requestDme();
  }
}

void StateRequest::processStateResponse(unsigned long clusterId, unsigned char state,
                                        unsigned long epoch) {
  {
    const std::lock_guard guard(lock_);
    state_ = {clusterId, state, epoch};
    isAwaited_ = false;
  }
  event_.set();
}

StateRequest::State StateRequest::state() const {
  const std::lock_guard guard(lock_);
  return state_;
}

void StateRequest::reset() {
  const std::lock_guard guard(lock_);
  state_ = {};
  isAwaited_ = false;
  event_.reset();
}

}  // namespace proc
