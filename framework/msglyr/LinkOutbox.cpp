#include "framework/msglyr/LinkOutbox.h"

#include <algorithm>
#include <utility>

#include "framework/msglyr/LinkBatch.h"

namespace msglyr {
namespace {

// A batch that has grown so far is closed and the next one begun.
constexpr std::size_t kFullBatchBytes = 256 * 1024;
constexpr std::size_t kSpareBuffers = 4;

}  // namespace

bool LinkOutbox::add(Link::PeerId to, std::string_view message) {
  const std::size_t size = message.size() + kLengthBytes;
  if (message.size() > limits_.maxMessageBytes || waiting_ + size > limits_.maxQueuedBytes) {
    return false;
  }
  const auto last = std::find_if(batches_.rbegin(), batches_.rend(),
                                 [to](const Batch& batch) { return batch.to == to; });
  Batch* batch = last == batches_.rend() ? nullptr : &*last;
  if (batch == nullptr || batch->bytes.size() >= kFullBatchBytes) {
    batch = &batches_.emplace_back();
    batch->to = to;
    batch->since = Clock::now();
    if (!spare_.empty()) {
      batch->bytes = std::move(spare_.back());
      spare_.pop_back();
    }
  }
  appendToBatch(batch->bytes, message);
  ++batch->messages;
  waiting_ += size;
  return true;
}

std::deque<LinkOutbox::Batch> LinkOutbox::takeAll() {
  return std::exchange(batches_, {});
}

void LinkOutbox::release(Batch&& batch) {
  waiting_ -= batch.bytes.size();
  if (spare_.size() < kSpareBuffers && batch.bytes.capacity() <= 2 * kFullBatchBytes) {
    batch.bytes.clear();
    spare_.push_back(std::move(batch.bytes));
  }
}

}  // namespace msglyr
