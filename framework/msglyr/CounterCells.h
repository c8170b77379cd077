#pragma once

#include <atomic>
#include <cstdint>

namespace msglyr {

// A figure that threads count up and others read; it orders nothing else.
class CounterCell {
 public:
  void add(std::uint64_t count = 1) { value_.fetch_add(count, std::memory_order_relaxed); }
  std::uint64_t load() const { return value_.load(std::memory_order_relaxed); }

 private:
  std::atomic<std::uint64_t> value_{0};
};

// The cells behind Counters, for this folder's sources.
struct CounterCells {
  CounterCell bound;
  CounterCell received;
  CounterCell refusedParts;
  CounterCell refusedBytes;
  CounterCell sent;
  CounterCell sendFailed;
  CounterCell receiveErrors;
};

CounterCells& counterCells();

}  // namespace msglyr
