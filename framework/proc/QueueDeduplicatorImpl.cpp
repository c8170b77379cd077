#include "framework/proc/QueueDeduplicatorImpl.h"

#include <algorithm>

namespace proc {

QueueDeduplicatorImpl::QueueDeduplicatorImpl(std::size_t elements) : most_(elements) {
  waiting_.reserve(elements);
}

bool QueueDeduplicatorImpl::enter(const os::Task& item) {
  const auto* inbound = dynamic_cast<const InboundItem*>(&item);
  if (inbound == nullptr || inbound->key().cookie.empty()) {
    return true;
  }
  const std::lock_guard guard(lock_);
  const bool isWaiting = std::any_of(waiting_.begin(), waiting_.end(), [&](const Element& element) {
    return element.key == inbound->key();
  });
  if (!isWaiting && waiting_.size() < most_) {
    waiting_.push_back({&item, inbound->key()});
  }
  return !isWaiting;
}

void QueueDeduplicatorImpl::leave(const os::Task& item) {
  const std::lock_guard guard(lock_);
  std::erase_if(waiting_, [&](const Element& element) { return element.item == &item; });
}

}  // namespace proc
