#include "dme/link/Inbox.h"

#include <utility>

namespace dme {

namespace {
constexpr std::size_t kKeptBytes = std::size_t{1024} * 1024;
}

void StimulusBatch::append(std::uint64_t peer, const unsigned char* bytes, std::size_t size) {
  entries_.push_back({peer, bytes_.size(), size});
  bytes_.insert(bytes_.end(), bytes, bytes + size);
}

void StimulusBatch::clear() {
  if (bytes_.capacity() > kKeptBytes) {
    *this = StimulusBatch();
    return;
  }
  bytes_.clear();
  entries_.clear();
}

bool Inbox::push(std::uint64_t peer, const unsigned char* bytes, std::size_t size) {
  bool wasEmpty = false;
  {
    const std::lock_guard lock(mutex_);
    if (isClosed_ || waiting_.size() + size > kMostBytes) {
      ++dropped_;
      return false;
    }
    wasEmpty = waiting_.entries().empty();
    waiting_.append(peer, bytes, size);
  }
  if (wasEmpty) {
    wake_.notify_one();
  }
  return true;
}

bool Inbox::take(StimulusBatch& batch, std::optional<os::Clock::TimePoint> deadline) {
  batch.clear();
  std::unique_lock lock(mutex_);
  const auto hasWork = [this] {
    return isClosed_ || isAwake_ || !waiting_.entries().empty();
  };
  if (deadline) {
    os::Clock::instance().waitUntil(wake_, lock, *deadline, hasWork);
  } else {
    wake_.wait(lock, hasWork);
  }
  std::swap(batch, waiting_);
  isAwake_ = false;
  return !isClosed_;
}

void Inbox::wake() {
  const std::lock_guard lock(mutex_);
  isAwake_ = true;
  wake_.notify_one();
}

void Inbox::close() {
  const std::lock_guard lock(mutex_);
  isClosed_ = true;
  wake_.notify_one();
}

std::uint64_t Inbox::dropped() const {
  const std::lock_guard lock(mutex_);
  return dropped_;
}

}  // namespace dme
