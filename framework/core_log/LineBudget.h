#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace core_log {

/// Bounds the lines that a peer can cause at will. Of each cause and source so many are written in
/// a period; the rest is counted, and the count is told when the period ends.
///
/// Not thread-safe.
class LineBudget {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  static constexpr std::chrono::seconds kPeriod{60};
  /// Of one cause and source in a period.
  static constexpr std::uint64_t kMostLines = 10;
  /// Causes and sources that are told apart in a period; all others share one place.
  static constexpr std::size_t kMostPlaces = 1000;

  /// Whether this line is to be written. A source is a number that the caller knows it by, e.g.
  /// that of a slot, and 0 where none is known.
  bool admits(std::string_view cause, std::uint32_t source, TimePoint now);

  /// When endPeriod() has something to tell.
  std::optional<TimePoint> deadline() const;

  using Tell =
      std::function<void(std::string_view cause, std::uint32_t source, std::uint64_t lines)>;
  /// Once the period is over: tells how many lines were left out, and of what.
  void endPeriod(TimePoint now, const Tell& tell);

 private:
  using Place = std::pair<std::string, std::uint32_t>;

  std::map<Place, std::uint64_t> lines_;  // of this period, also those left out
  TimePoint end_;                         // of the period, while there are lines
  bool isOver_ = false;                   // any line was left out
};

}  // namespace core_log
