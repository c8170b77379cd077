#include "framework/noxxml/Limits.h"

#include <algorithm>
#include <atomic>

namespace noxxml {
namespace {

std::atomic<std::size_t> maxBytes{Limits().maxBytes};
std::atomic<unsigned> maxDepth{Limits().maxDepth};
std::atomic<std::size_t> maxElements{Limits().maxElements};

}  // namespace

Limits limits() noexcept {
  Limits current;
  current.maxBytes = maxBytes.load(std::memory_order_relaxed);
  current.maxDepth = maxDepth.load(std::memory_order_relaxed);
  current.maxElements = maxElements.load(std::memory_order_relaxed);
  return current;
}

void setLimits(const Limits& limits) noexcept {
  maxBytes.store(limits.maxBytes, std::memory_order_relaxed);
  maxDepth.store(std::min(limits.maxDepth, Limits::kMaxDepth), std::memory_order_relaxed);
  maxElements.store(limits.maxElements, std::memory_order_relaxed);
}

}  // namespace noxxml
