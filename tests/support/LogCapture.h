#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "framework/core_log/Log.h"

namespace test_support {

/// One emitted line, without its LF.
struct LogLine {
  int level = 0;
  std::string function;
  std::string text;

  bool operator==(const LogLine&) const = default;
};

/// Collects every line that the process emits during its lifetime, from all threads. One at a time.
class LogCapture final : private core_log::Observer {
 public:
  /// Sets the service's level for as long as it lives; 0 lets every line through.
  explicit LogCapture(int level = 0);
  ~LogCapture() override;

  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  [[nodiscard]] std::vector<LogLine> lines() const;

  /// Those of one function, in order.
  [[nodiscard]] std::vector<LogLine> linesOf(std::string_view function) const;

  /// True when a line of this level has exactly this text.
  [[nodiscard]] bool contains(int level, std::string_view text) const;

  /// How many lines of this level have exactly this text.
  [[nodiscard]] std::size_t count(int level, std::string_view text) const;

  /// Blocks until `contains`. False after 30 real seconds.
  [[nodiscard]] bool waitFor(int level, std::string_view text) const;

  void clear();

 private:
  void onLine(int level, std::string_view function, std::string_view text) override;
  [[nodiscard]] std::size_t countLocked(int level, std::string_view text) const;

  const int previousLevel_;
  mutable std::mutex mutex_;
  mutable std::condition_variable arrived_;
  std::vector<LogLine> lines_;  // guarded by mutex_
};

}  // namespace test_support
