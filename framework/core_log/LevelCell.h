#pragma once

#include <atomic>

namespace core_log {

inline constexpr int kLowestLevel = 0;
inline constexpr int kHighestLevel = 8;
inline constexpr int kDefaultLevel = 5;

/// The threshold of one group of log lines: 0 lets everything through, 8 only the errors.
/// Any thread may read and set it at any time. A thread that logs sees a new threshold soon, not
/// at once: the cell orders nothing but itself.
class LevelCell {
 public:
  constexpr explicit LevelCell(int level = kDefaultLevel) : level_(level) {}

  LevelCell(const LevelCell&) = delete;
  LevelCell& operator=(const LevelCell&) = delete;

  /// True when a line of this level is emitted, that is when the threshold is not above it.
  [[nodiscard]] bool admits(int lineLevel) const {
    return level_.load(std::memory_order_relaxed) <= lineLevel;
  }

  [[nodiscard]] int get() const { return level_.load(std::memory_order_relaxed); }

  /// Sets the threshold. False, and nothing changes, when it is not within 0 and 8.
  bool set(int level) {
    if (level < kLowestLevel || level > kHighestLevel) {
      return false;
    }
    level_.store(level, std::memory_order_relaxed);
    return true;
  }

 private:
  std::atomic<int> level_;
};

namespace detail {
extern LevelCell serviceCell;
}

/// The cell that every line of this service names, one for the process. Default level 5.
inline LevelCell& serviceLevel() {
  return detail::serviceCell;
}

}  // namespace core_log
