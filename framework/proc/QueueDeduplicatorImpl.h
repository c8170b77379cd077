#pragma once

#include <cstddef>
#include <mutex>
#include <vector>

#include "framework/os/ReactiveQueue.h"
#include "framework/proc/InboundItem.h"

namespace proc {

/// Keeps out a stimulus that arrives again while it still waits in the queue: the engine repeats a
/// call when the link failed under it. Same class, same direction, same cookie; stimuli without a
/// cookie are never the same. Thread-safe.
class QueueDeduplicatorImpl final : public os::Deduplicator {
 public:
  /// `elements` is how many waiting stimuli are remembered; those beyond are let through unseen.
  explicit QueueDeduplicatorImpl(std::size_t elements);

  bool enter(const os::Task& item) override;
  void leave(const os::Task& item) override;

 private:
  struct Element {
    const os::Task* item = nullptr;
    InboundItem::Key key;
  };

  std::mutex lock_;
  const std::size_t most_;
  std::vector<Element> waiting_;  // guarded by lock_
};

}  // namespace proc
