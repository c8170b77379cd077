#include "serviceOrchAG/bridge/PendingMap.h"

#include <algorithm>
#include <utility>

#include "serviceOrchAG/bridge/ResponseSync.h"

namespace zan_serviceOrchAG {

void MsgHandlerBase::fileResp(ResponseSync& waiter) {
  const os::CriticalSection::Guard guard(pendingLock_);
  pending_[waiter.cookie] = &waiter;
}

void MsgHandlerBase::rmResp(base::Buffer cookie) {
  const os::CriticalSection::Guard guard(pendingLock_);
  ResponseSync* const waiter = std::exchange(pending_[std::move(cookie)], nullptr);
  if (waiter != nullptr) {
    // Kept for good: a callback that got here first is through with the object once this returns.
    waiter->lock.lock();
  }
}

ResponseSync* MsgHandlerBase::lockPending(const base::Buffer& cookie) {
  const os::CriticalSection::Guard guard(pendingLock_);
  ResponseSync* const waiter = pending_[cookie];
  if (waiter != nullptr) {
    // Before the map's lock goes, or the waiter could withdraw and vanish in between.
    waiter->lock.lock();
  }
  return waiter;
}

std::size_t MsgHandlerBase::knownCookies() const {
  const os::CriticalSection::Guard guard(pendingLock_);
  return pending_.size();
}

std::size_t MsgHandlerBase::waitingCookies() const {
  const os::CriticalSection::Guard guard(pendingLock_);
  return static_cast<std::size_t>(std::count_if(
      pending_.begin(), pending_.end(), [](const auto& entry) { return entry.second != nullptr; }));
}

PendingResponse::PendingResponse(MsgHandlerBase& handler, ResponseSync& waiter)
    : handler_(&handler), cookie_(waiter.cookie) {
  handler.fileResp(waiter);
}

void PendingResponse::withdraw() {
  if (MsgHandlerBase* const handler = std::exchange(handler_, nullptr)) {
    handler->rmResp(std::move(cookie_));
  }
}

}  // namespace zan_serviceOrchAG
